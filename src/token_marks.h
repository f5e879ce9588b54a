#pragma once

#include <cstddef>
#include <cstdint>

/// Looks at 64 bytes of a text at once. One after the other, each token would have to wait for the
/// one before to tell where it starts. In the masks bit i stands for byte i. Needs SSE2: elsewhere
/// nothing can be told, and the token list reads it all.

namespace trellion {

/// The tokens of a stretch of text, split like those of a token_list. All that start in it end in
/// it.
struct token_marks {
  std::uint64_t tokens = 0;     ///< where a word or brace starts
  std::uint64_t numbers = 0;    ///< those that are numbers
  std::uint64_t line_ends = 0;  ///< the last byte of each line end
  std::size_t length = 0;       ///< of the stretch: at most 64 bytes, or one word that is no number

  // These tell how the numbers are made up. They also hold what is behind the stretch.
  std::uint64_t points = 0;  ///< every "."
  std::uint64_t breaks = 0;  ///< blanks, line ends, braces, and whatever is behind the text
};

/// Marks the tokens from `text` on, which must not be within a word; `end` is the text's. The
/// length is 0 when a token cannot be told from 64 bytes, or none starts in them. The marks
/// are written where they are wanted: a copy would have to wait for what has just been written.
void mark_tokens(const char* text, const char* end, token_marks& marks);

/// The first place from `text` on, or `end`, at which writing the tokens does not restore the text:
/// a CR, or a line end after a blank. `text` itself must not be after a blank.
const char* find_other_layout(const char* text, const char* end);

}  // namespace trellion
