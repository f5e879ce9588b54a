#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace trellion::pdf {

/// The operators of content streams, as far as they are told apart.
enum class op : std::uint8_t {
  // paths
  move,
  line,
  curve,  ///< c v y
  close,
  rectangle,
  clip,  ///< W W*
  // what ends a path
  end_path,
  fill,  ///< f F
  fill_even_odd,
  stroke,
  close_stroke,
  both,
  both_even_odd,
  close_both,
  close_both_even_odd,
  // state
  save,
  restore,
  matrix,
  fill_gray,
  fill_rgb,
  fill_cmyk,
  fill_space,
  fill_colour,  ///< sc scn
  stroke_gray,
  stroke_rgb,
  stroke_cmyk,
  stroke_space,
  stroke_colour,
  line_width,
  line_cap,
  line_join,
  miter_limit,
  dash,
  flatness,
  intent,
  parameters,  ///< gs
  // the rest
  begin_text,
  end_text,
  draw_object,  ///< Do
  comment,
  known,    ///< any other operator of content streams, or a whole inline image
  unknown,  ///< a word that is none
};

enum class operand_kind : std::uint8_t {
  number,
  name,
  string,
  array,
  dictionary,
  word,  ///< true, false or null
};

/// A view into the content, names with their slash.
struct operand {
  std::string_view text;
  operand_kind kind = operand_kind::number;
};

/// An operator with its operands, whose number and kinds are those that the operator takes.
struct instruction {
  op code = op::unknown;
  std::span<const operand> operands;
  std::size_t begin = 0;  ///< where its first operand begins
  std::size_t operator_at = 0;
  std::size_t end = 0;  ///< behind the operator
};

/// Splits a content stream into instructions. The content must outlive it.
class content_reader {
 public:
  enum class outcome : std::uint8_t { read, at_end, malformed };

  explicit content_reader(std::string_view content);
  ~content_reader();

  /// Reads the next instruction. What is malformed stays so.
  outcome next();
  /// Holds until the next one is read.
  [[nodiscard]] const instruction& current() const { return current_; }

 private:
  struct tokenizer;

  bool read_number();
  void read_name();
  bool read_compound(operand_kind& kind);
  bool read_inline_image();
  void skip_comment();
  outcome finish(std::size_t word_begin);
  tokenizer& careful_tokens();

  std::string_view content_;
  std::size_t at_ = 0;
  std::vector<operand> operands_;
  bool are_numbers_ = true;  // the operands, all of them
  instruction current_;
  std::unique_ptr<tokenizer> tokenizer_;  // for what is seldom, and hard to read
};

/// The name that a text with its slash spells: "/A#42" is "/AB".
std::string plain_name(std::string_view text);

}  // namespace trellion::pdf
