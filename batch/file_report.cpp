#include "batch/file_report.h"

namespace trellion::batch {
namespace {

int gravity(verdict result) {
  switch (result) {
    case verdict::written: return 0;
    case verdict::possible: return 1;
    case verdict::exists: return 2;
    case verdict::skipped: return 3;
    case verdict::nothing_to_join: return 4;
    case verdict::not_kept: return 5;
    case verdict::withheld: return 6;
    case verdict::failed: return 7;
    case verdict::interrupted: return 8;
  }
  return 9;
}

}  // namespace

bool is_good(verdict result) {
  switch (result) {
    case verdict::written:
    case verdict::possible:
    case verdict::exists:
    case verdict::skipped:
    case verdict::nothing_to_join:
    case verdict::not_kept: return true;
    case verdict::withheld:
    case verdict::failed:
    case verdict::interrupted: break;
  }
  return false;
}

bool is_graver(verdict a, verdict b) { return gravity(a) > gravity(b); }

std::int64_t sum(const hairline_counts& counts) {
  return counts.ghostscript.value_or(0) + counts.cairo.value_or(0);
}

}  // namespace trellion::batch
