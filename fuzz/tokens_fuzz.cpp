#include "fuzz_support.h"
#include "support.h"
#include "tokens.h"

// Splits a text into tokens, writes them, and splits what was written: the text's content and the
// layout that counts come through, and the tokens are the same.

namespace {

using namespace trellion;

std::string written(const token_list& list) {
  testing::captured_text out;
  token_list nothing = list;
  while (!nothing.empty()) nothing.take_head();
  purge({list, nothing}, out);
  return out.text();
}

/// Both texts may differ in how their lines end, not in their tokens.
bool same_tokens(token_list a, token_list b) {
  while (!a.empty() && !b.empty()) {
    const token of_a = a.take_head();
    const token of_b = b.take_head();
    if (of_a.kind != of_b.kind || of_a.text != of_b.text || of_a.line_number != of_b.line_number ||
        of_a.line_ends != of_b.line_ends || of_a.leading_spaces != of_b.leading_spaces) {
      return false;
    }
  }
  return a.empty() && b.empty();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input = fuzzing::as_text(data, size);
  testing::captured_text console;
  fuzzing::source_in_pieces source(input);
  const file_text text = tokenize_file(source, size / 2, console);
  fuzzing::require(text.view() == input, "the text is read whole");

  const std::string output = written(token_list(text.view()));
  fuzzing::require(output == fuzzing::with_plain_layout(input), "the layout that counts is kept");
  fuzzing::require(same_tokens(token_list(input), token_list(output)), "the tokens are the same");

  testing::captured_text all;
  token_list rest(input);
  purge_comments(rest, all);
  fuzzing::require(all.text() + written(rest) == output, "comments taken off are not lost");
  return 0;
}
