#include "batch/filter.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "batch/eps_page.h"
#include "batch/private_directory.h"
#include "batch/repair_job.h"
#include "batch/report_file.h"
#include "batch/standard_input.h"
#include "batch/table.h"
#include "batch/text.h"
#include "batch/whole_file.h"
#include "files.h"

namespace trellion::batch {

namespace fs = std::filesystem;

int run_filter(const batch_options& options, const process_runner& runner,
               const interruption& interrupted) {
  const std::unique_ptr<report_file> file = open_report(options.report, {});
  const private_directory directory(fs::temp_directory_path());
  std::string figure = read_standard_input(interrupted);
  const std::string extension = kind_of(figure) == file_kind::pdf ? ".pdf" : ".eps";
  const work_item item{directory / ("figure" + extension), directory / ("result" + extension), {}};
  write_whole(item.file, "", figure);

  file_report report = repair_file(item, options, runner);
  report.file = "-";
  if (report.result == verdict::interrupted) return 1;
  if (report.result == verdict::written) figure = read_whole(item.result);
  console_output standard_output;
  standard_output.write(figure);
  if (!options.quiet || !is_good(report.result)) {
    const std::string saved = report.result == verdict::written ? saved_text(report) : "";
    complain("standard input: " + in_words(report) + (saved.empty() ? "" : ", saves " + saved));
  }
  if (file) write_report({report}, *file);
  return is_good(report.result) ? 0 : 1;
}

}  // namespace trellion::batch
