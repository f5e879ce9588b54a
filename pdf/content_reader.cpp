#include "pdf/content_reader.h"

#include <array>
#include <charconv>
#include <qpdf/Buffer.hh>
#include <qpdf/BufferInputSource.hh>
#include <qpdf/QPDFTokenizer.hh>

namespace trellion::pdf {
namespace {

enum class character : std::uint8_t { blank, numeric, regular, delimiter, odd };

constexpr std::array<character, 256> make_characters() {
  std::array<character, 256> result{};
  for (std::size_t c = 0; c < result.size(); ++c) {
    result[c] = c > ' ' && c < 127 ? character::regular : character::odd;
  }
  for (const char c : std::string_view("\0\t\n\f\r ", 6)) {
    result[static_cast<unsigned char>(c)] = character::blank;
  }
  for (const char c : std::string_view("+-.0123456789")) {
    result[static_cast<unsigned char>(c)] = character::numeric;
  }
  for (const char c : std::string_view("()<>[]{}/%")) {
    result[static_cast<unsigned char>(c)] = character::delimiter;
  }
  return result;
}
constexpr std::array<character, 256> characters = make_characters();

character kind_of(char c) { return characters[static_cast<unsigned char>(c)]; }

bool is_number(std::string_view text) {
  if (text[0] == '+' || text[0] == '-') text.remove_prefix(1);
  bool has_digit = false;
  bool has_point = false;
  for (const char c : text) {
    if (c >= '0' && c <= '9') {
      has_digit = true;
    } else if (c == '.' && !has_point) {
      has_point = true;
    } else {
      return false;
    }
  }
  return has_digit;
}

/// An operator, and what it takes: a letter for each operand, n(umber), N(ame), s(tring), a(rray),
/// p(roperties: a dictionary or a name); or "*" for colours: numbers, then perhaps a name.
struct operator_form {
  op code = op::unknown;
  std::string_view operands;
};

constexpr std::uint32_t packed(std::string_view word) {
  std::uint32_t result = 0;
  for (const char c : word) result = result << 8U | static_cast<unsigned char>(c);
  return result;
}

operator_form form_of(std::string_view word) {
  if (word.size() > 3) return {};
  switch (packed(word)) {
    case packed("m"): return {op::move, "nn"};
    case packed("l"): return {op::line, "nn"};
    case packed("c"): return {op::curve, "nnnnnn"};
    case packed("v"):
    case packed("y"): return {op::curve, "nnnn"};
    case packed("h"): return {op::close, ""};
    case packed("re"): return {op::rectangle, "nnnn"};
    case packed("W"):
    case packed("W*"): return {op::clip, ""};
    case packed("n"): return {op::end_path, ""};
    case packed("f"):
    case packed("F"): return {op::fill, ""};
    case packed("f*"): return {op::fill_even_odd, ""};
    case packed("S"): return {op::stroke, ""};
    case packed("s"): return {op::close_stroke, ""};
    case packed("B"): return {op::both, ""};
    case packed("B*"): return {op::both_even_odd, ""};
    case packed("b"): return {op::close_both, ""};
    case packed("b*"): return {op::close_both_even_odd, ""};
    case packed("q"): return {op::save, ""};
    case packed("Q"): return {op::restore, ""};
    case packed("cm"): return {op::matrix, "nnnnnn"};
    case packed("g"): return {op::fill_gray, "n"};
    case packed("rg"): return {op::fill_rgb, "nnn"};
    case packed("k"): return {op::fill_cmyk, "nnnn"};
    case packed("cs"): return {op::fill_space, "N"};
    case packed("sc"):
    case packed("scn"): return {op::fill_colour, "*"};
    case packed("G"): return {op::stroke_gray, "n"};
    case packed("RG"): return {op::stroke_rgb, "nnn"};
    case packed("K"): return {op::stroke_cmyk, "nnnn"};
    case packed("CS"): return {op::stroke_space, "N"};
    case packed("SC"):
    case packed("SCN"): return {op::stroke_colour, "*"};
    case packed("w"): return {op::line_width, "n"};
    case packed("J"): return {op::line_cap, "n"};
    case packed("j"): return {op::line_join, "n"};
    case packed("M"): return {op::miter_limit, "n"};
    case packed("d"): return {op::dash, "an"};
    case packed("i"): return {op::flatness, "n"};
    case packed("ri"): return {op::intent, "N"};
    case packed("gs"): return {op::parameters, "N"};
    case packed("BT"): return {op::begin_text, ""};
    case packed("ET"): return {op::end_text, ""};
    case packed("Do"): return {op::draw_object, "N"};
    case packed("T*"):
    case packed("EMC"):
    case packed("BX"):
    case packed("EX"): return {op::known, ""};
    case packed("Tc"):
    case packed("Tw"):
    case packed("Tz"):
    case packed("TL"):
    case packed("Tr"):
    case packed("Ts"): return {op::known, "n"};
    case packed("Td"):
    case packed("TD"):
    case packed("d0"): return {op::known, "nn"};
    case packed("Tm"):
    case packed("d1"): return {op::known, "nnnnnn"};
    case packed("Tf"): return {op::known, "Nn"};
    case packed("Tj"):
    case packed("'"): return {op::known, "s"};
    case packed("\""): return {op::known, "nns"};
    case packed("TJ"): return {op::known, "a"};
    case packed("sh"):
    case packed("MP"):
    case packed("BMC"): return {op::known, "N"};
    case packed("DP"):
    case packed("BDC"): return {op::known, "Np"};
    default: return {};
  }
}

bool fits(operand_kind kind, char letter) {
  switch (letter) {
    case 'n': return kind == operand_kind::number;
    case 'N': return kind == operand_kind::name;
    case 's': return kind == operand_kind::string;
    case 'a': return kind == operand_kind::array;
    default: return kind == operand_kind::dictionary || kind == operand_kind::name;
  }
}

/// Whether operands are a colour: some numbers, or a pattern's name behind any number of them.
bool are_colour(std::span<const operand> operands) {
  if (operands.empty()) return false;
  for (const operand& each : operands.first(operands.size() - 1))
    if (each.kind != operand_kind::number) return false;
  return operands.back().kind == operand_kind::number || operands.back().kind == operand_kind::name;
}

bool fit(std::span<const operand> operands, bool are_numbers, const operator_form& form) {
  if (form.operands == "*") return are_colour(operands);
  if (operands.size() != form.operands.size()) return false;
  if (are_numbers &&
      (form.operands.empty() || (form.operands[0] == 'n' && form.operands.back() == 'n')))
    return true;
  for (std::size_t i = 0; i < operands.size(); ++i)
    if (!fits(operands[i].kind, form.operands[i])) return false;
  return true;
}

}  // namespace

/// The library's tokenizer, over the same content.
struct content_reader::tokenizer {
  explicit tokenizer(std::string_view content)
      // The buffer is only read, but its type does not say so.
      : buffer(reinterpret_cast<unsigned char*>(const_cast<char*>(content.data())),  // NOLINT
               content.size()),
        input(std::make_shared<BufferInputSource>("content", &buffer)) {
    words.allowEOF();
  }

  void go_to(std::size_t offset) { input->seek(static_cast<qpdf_offset_t>(offset), SEEK_SET); }
  [[nodiscard]] std::size_t offset() const { return static_cast<std::size_t>(input->tell()); }
  QPDFTokenizer::Token read() { return words.readToken(input, "content", true); }

  Buffer buffer;
  std::shared_ptr<BufferInputSource> input;
  QPDFTokenizer words;
};

content_reader::content_reader(std::string_view content) : content_(content) {}
content_reader::~content_reader() = default;

content_reader::tokenizer& content_reader::careful_tokens() {
  if (!tokenizer_) tokenizer_ = std::make_unique<tokenizer>(content_);
  tokenizer_->go_to(at_);
  return *tokenizer_;
}

content_reader::outcome content_reader::next() {
  operands_.clear();
  are_numbers_ = true;
  while (true) {
    while (at_ < content_.size() && kind_of(content_[at_]) == character::blank) ++at_;
    if (at_ == content_.size()) return operands_.empty() ? outcome::at_end : outcome::malformed;
    switch (kind_of(content_[at_])) {
      case character::numeric:
        if (!read_number()) return outcome::malformed;
        break;
      case character::regular: {
        const std::size_t begin = at_;
        while (at_ < content_.size() && (kind_of(content_[at_]) == character::regular ||
                                         kind_of(content_[at_]) == character::numeric))
          ++at_;
        const std::string_view word = content_.substr(begin, at_ - begin);
        if (word == "true" || word == "false" || word == "null") {
          are_numbers_ = false;
          operands_.push_back({word, operand_kind::word});
          break;
        }
        return finish(begin);
      }
      case character::delimiter:
        if (content_[at_] == '%') {
          // Between operands it would be lost with them.
          if (!operands_.empty()) return outcome::malformed;
          skip_comment();
          return outcome::read;
        }
        are_numbers_ = false;
        if (content_[at_] == '/') {
          read_name();
        } else {
          const std::size_t begin = at_;
          operand_kind kind{};
          if (!read_compound(kind)) return outcome::malformed;
          operands_.push_back({content_.substr(begin, at_ - begin), kind});
        }
        break;
      default: return outcome::malformed;
    }
  }
}

bool content_reader::read_number() {
  const std::size_t begin = at_;
  while (at_ < content_.size() && kind_of(content_[at_]) == character::numeric) ++at_;
  if (at_ < content_.size() &&
      (kind_of(content_[at_]) == character::regular || kind_of(content_[at_]) == character::odd))
    return false;
  const std::string_view text = content_.substr(begin, at_ - begin);
  operands_.push_back({text, operand_kind::number});
  // Viewers read longer ones each in their own way.
  constexpr std::size_t longest_number = 100;
  return text.size() <= longest_number && is_number(text);
}

void content_reader::read_name() {
  const std::size_t begin = at_++;
  while (at_ < content_.size() && kind_of(content_[at_]) != character::blank &&
         kind_of(content_[at_]) != character::delimiter)
    ++at_;
  operands_.push_back({content_.substr(begin, at_ - begin), operand_kind::name});
}

/// Reads a string, or an array or dictionary with all that is in it.
bool content_reader::read_compound(operand_kind& kind) {
  using token = QPDFTokenizer;
  tokenizer& tokens = careful_tokens();
  std::string open;  // brackets and braces, for what is to be closed
  do {
    switch (tokens.read().getType()) {
      case token::tt_array_open: open += ']'; break;
      case token::tt_dict_open: open += '>'; break;
      case token::tt_array_close:
        if (!open.ends_with(']')) return false;
        if (open.size() == 1) kind = operand_kind::array;
        open.pop_back();
        break;
      case token::tt_dict_close:
        if (!open.ends_with('>')) return false;
        if (open.size() == 1) kind = operand_kind::dictionary;
        open.pop_back();
        break;
      case token::tt_string:
        if (open.empty()) kind = operand_kind::string;
        break;
      case token::tt_integer:
      case token::tt_real:
      case token::tt_name:
      case token::tt_bool:
      case token::tt_null:
        if (open.empty()) return false;
        break;
      default: return false;
    }
  } while (!open.empty());
  at_ = tokens.offset();
  return true;
}

void content_reader::skip_comment() {
  current_ = {.code = op::comment, .operands = {}, .begin = at_, .operator_at = at_};
  while (at_ < content_.size() && content_[at_] != '\n' && content_[at_] != '\r') ++at_;
  // Its end of line belongs to it: what is written behind it must not become a part of it.
  if (at_ < content_.size()) ++at_;
  current_.end = at_;
}

content_reader::outcome content_reader::finish(std::size_t word_begin) {
  const std::string_view word = content_.substr(word_begin, at_ - word_begin);
  current_.operands = operands_;
  current_.begin = operands_.empty()
                       ? word_begin
                       : static_cast<std::size_t>(operands_[0].text.data() - content_.data());
  current_.operator_at = word_begin;
  current_.end = at_;
  if (word == "BI") {
    if (!operands_.empty() || !read_inline_image()) return outcome::malformed;
    current_.code = op::known;
    current_.end = at_;
    return outcome::read;
  }
  const operator_form form = form_of(word);
  current_.code = form.code;
  if (form.code == op::unknown) return outcome::read;
  return fit(operands_, are_numbers_, form) ? outcome::read : outcome::malformed;
}

/// What the entries of an inline image say of its size, as far as that is simple.
struct image_size {
  std::uint64_t width = 0;
  std::uint64_t height = 0;
  std::uint64_t bits = 0;  // of a component
  std::uint64_t components = 0;
  bool is_packed = false;

  void take(std::string_view key, std::string_view value) {
    if (key == "/W" || key == "/Width") width = number(value);
    if (key == "/H" || key == "/Height") height = number(value);
    if (key == "/BPC" || key == "/BitsPerComponent") bits = number(value);
    if (key == "/F" || key == "/Filter") is_packed = true;
    if (key == "/CS" || key == "/ColorSpace") components = components_in(value);
    if ((key == "/IM" || key == "/ImageMask") && value == "true") bits = components = 1;
  }
  /// The bytes of plain samples; 0 when that is not known.
  [[nodiscard]] std::uint64_t in_bytes() const {
    return (width * bits * components + 7) / 8 * height;
  }

 private:
  static std::uint64_t number(std::string_view text) {
    constexpr std::uint64_t most = 100'000;
    std::uint64_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value <= most ? value : 0;
  }
  static std::uint64_t components_in(std::string_view space) {
    if (space == "/G" || space == "/DeviceGray" || space == "/I" || space == "/Indexed") return 1;
    if (space == "/RGB" || space == "/DeviceRGB") return 3;
    return space == "/CMYK" || space == "/DeviceCMYK" ? 4 : 0;
  }
};

bool content_reader::read_inline_image() {
  tokenizer& tokens = careful_tokens();
  image_size size;
  std::string key;
  while (true) {
    const QPDFTokenizer::Token token = tokens.read();
    if (token.getType() == QPDFTokenizer::tt_eof || token.getType() == QPDFTokenizer::tt_bad)
      return false;
    if (token.isWord("ID")) break;
    if (token.getType() == QPDFTokenizer::tt_array_open) continue;  // its first item tells its kind
    size.take(key, token.getValue());
    key = token.getValue();
  }
  // One blank, then the image.
  const auto begin = tokens.offset() + 1;
  tokens.go_to(begin);
  if (size.is_packed) {
    tokens.words.expectInlineImage(tokens.input);
    if (tokens.read().getType() != QPDFTokenizer::tt_inline_image) return false;
  } else {
    // Samples can look like the end.
    if (size.in_bytes() == 0 ||
        size.in_bytes() > content_.size() - std::min(begin, content_.size()))
      return false;
    tokens.go_to(begin + size.in_bytes());
  }
  if (!tokens.read().isWord("EI")) return false;
  at_ = tokens.offset();
  return true;
}

std::string plain_name(std::string_view text) {
  const auto value_of = [](char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
  };
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '#' && i + 2 < text.size() && value_of(text[i + 1]) >= 0 &&
        value_of(text[i + 2]) >= 0) {
      result += static_cast<char>(value_of(text[i + 1]) * 16 + value_of(text[i + 2]));
      i += 2;
    } else {
      result += text[i];
    }
  }
  return result;
}

}  // namespace trellion::pdf
