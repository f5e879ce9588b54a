#include "token_marks.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "string_utils.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace trellion {

#ifdef __SSE2__

namespace {

constexpr std::size_t block_bytes = 64;

/// The 64 bytes at a place of a text.
class byte_block {
 public:
  explicit byte_block(const char* text) {
    for (std::size_t i = 0; i < 4; ++i) {
      parts_[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + 16 * i));
    }
  }

  /// The bytes that are one of the given characters.
  template <char... Chars>
  [[nodiscard]] std::uint64_t any_of() const {
    return mask([](__m128i part) { return (_mm_cmpeq_epi8(part, _mm_set1_epi8(Chars)) | ...); });
  }
  /// False only when no byte is a CR or a brace, and mostly so when none is: few texts hold other
  /// bytes from the braces on. It takes less than to look for each.
  [[nodiscard]] bool may_hold_return_or_brace() const {
    const auto is_return = [](__m128i part) { return _mm_cmpeq_epi8(part, _mm_set1_epi8('\r')); };
    const __m128i first_brace = _mm_set1_epi8('{');
    const __m128i largest =
        _mm_max_epu8(_mm_max_epu8(parts_[0], parts_[1]), _mm_max_epu8(parts_[2], parts_[3]));
    const __m128i found = _mm_cmpeq_epi8(_mm_max_epu8(largest, first_brace), largest) |
                          is_return(parts_[0]) | is_return(parts_[1]) | is_return(parts_[2]) |
                          is_return(parts_[3]);
    return _mm_movemask_epi8(found) != 0;
  }
  [[nodiscard]] std::uint64_t digits() const {
    return mask([](__m128i part) {
      const __m128i value = _mm_sub_epi8(part, _mm_set1_epi8('0'));
      return _mm_cmpeq_epi8(_mm_min_epu8(value, _mm_set1_epi8(9)), value);
    });
  }

 private:
  /// The test sets all bits of the bytes that it is true for.
  template <typename Test>
  [[nodiscard]] std::uint64_t mask(Test test) const {
    const auto bits = [&](std::size_t i) {
      return std::uint64_t{static_cast<std::uint32_t>(_mm_movemask_epi8(test(parts_[i])))};
    };
    return bits(0) | bits(1) << 16 | bits(2) << 32 | bits(3) << 48;
  }

  __m128i parts_[4];
};

/// A word of 64 bytes or more.
void mark_long_word(const char* text, const char* end, token_marks& marks) {
  const char* after = text + block_bytes;
  while (after != end && !ends_word(*after)) ++after;
  if (after == end) return;
  marks.tokens = 1;
  marks.length = static_cast<std::size_t>(after - text);
}

}  // namespace

void mark_tokens(const char* text, const char* end, token_marks& marks) {
  const auto left = static_cast<std::size_t>(end - text);
  std::array<char, block_bytes> padded;
  const bool is_short = left < block_bytes;
  if (is_short) {
    padded.fill(' ');
    std::memcpy(padded.data(), text, left);
  }
  const byte_block block(is_short ? padded.data() : text);
  const std::uint64_t feeds = block.any_of<'\n'>();
  const bool is_usual = !block.may_hold_return_or_brace();
  const std::uint64_t others = is_usual ? 0 : block.any_of<'\r', '{', '}'>();
  const std::uint64_t returns = others != 0 ? block.any_of<'\r'>() : 0;
  const std::uint64_t breaks = block.any_of<' '>() | feeds | others;
  const std::uint64_t digits = block.digits();
  const std::uint64_t points = block.any_of<'.'>();
  const std::uint64_t minuses = block.any_of<'-'>();
  const std::uint64_t number_bytes = digits | points | minuses;

  // A word that does not end here is left to the next stretch, and so is a CR that an LF may
  // follow.
  std::uint64_t within = ~std::uint64_t{0};
  if (breaks != 0) within >>= returns >> 63 != 0 ? 1 : std::countl_zero(breaks);
  const std::uint64_t words = ~breaks & within;
  const std::uint64_t starts = words & ~(words << 1);

  // A sum carries a bit at the start of a run past the run's end.
  const std::uint64_t could_be_numbers = starts & number_bytes;
  const std::uint64_t their_bytes = words & ~(words + could_be_numbers);
  const std::uint64_t second_points = ((points << 1) + digits) & ~digits & points;
  const std::uint64_t stray_minuses = minuses & (~starts | breaks >> 1);
  std::uint64_t spoilers = their_bytes & (~number_bytes | second_points | stray_minuses);

  if (breaks == 0) {
    marks = {};
    const bool may_be_number = could_be_numbers != 0 && spoilers == 0;
    if (!may_be_number) mark_long_word(text, end, marks);
    return;
  }
  marks.numbers = could_be_numbers;
  for (; spoilers != 0; spoilers &= spoilers - 1) {
    const std::uint64_t upto = spoilers ^ (spoilers - 1);
    marks.numbers &= ~std::bit_floor(starts & upto);
  }
  marks.tokens = starts | (others & ~returns & within);
  marks.points = points;
  marks.breaks = breaks;
  marks.line_ends = (feeds | (returns & ~(feeds >> 1))) & within;
  const bool all_gap = marks.tokens == 0 && within == ~std::uint64_t{0};
  const auto length = block_bytes - static_cast<std::size_t>(std::countl_zero(within));
  marks.length = all_gap ? 0 : std::min(left, length);
}

#else

// Made without such instructions the masks take longer than splitting the tokens off.
void mark_tokens(const char* /*text*/, const char* /*end*/, token_marks& marks) { marks = {}; }

#endif

const char* find_other_layout(const char* text, const char* end) {
  bool after_blank = false;
#ifdef __SSE2__
  for (; end - text >= std::ptrdiff_t{block_bytes}; text += block_bytes) {
    const byte_block block(text);
    const std::uint64_t blanks = block.any_of<' '>();
    const std::uint64_t others =
        block.any_of<'\r'>() | (block.any_of<'\n'>() & (blanks << 1 | (after_blank ? 1 : 0)));
    if (others != 0) return text + std::countr_zero(others);
    after_blank = blanks >> 63 != 0;
  }
#endif
  for (; text != end; ++text) {
    if (*text == '\r' || (*text == '\n' && after_blank)) break;
    after_blank = *text == ' ';
  }
  return text;
}

}  // namespace trellion
