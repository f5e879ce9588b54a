#include "random_content.h"

#include <array>
#include <initializer_list>
#include <string_view>

namespace trellion::pdf::testing {

std::string random_content(const std::function<unsigned(unsigned n)>& choose) {
  std::string text;
  unsigned depth = 0;
  const auto write = [&](std::string_view word) { (text += word) += choose(8) == 0 ? '\n' : ' '; };
  const auto number = [&](unsigned n) { write(std::to_string(choose(n))); };
  const auto pick = [&](std::initializer_list<std::string_view> of) {
    write(of.begin()[choose(static_cast<unsigned>(of.size()))]);
  };
  const auto corner = [&](unsigned x, unsigned y, std::string_view name) {
    write(std::to_string(x));
    constexpr std::array<const char*, 9> odd_ends = {".0", ".0004"};
    const char* const end = odd_ends[choose(odd_ends.size())];
    write(std::to_string(y) + (end == nullptr ? "" : end));
    write(name);
  };
  const auto add_path = [&] {
    const unsigned x = choose(6);
    const unsigned y = choose(6);
    const std::array<std::array<unsigned, 2>, 4> cell = {
        {{x, y}, {x + 1, y}, {x + 1, y + 1}, {x, y + 1}}};
    switch (choose(8)) {
      case 0:
      case 1:
        corner(x, y, "1");
        write("1 re");
        return;
      case 2:  // anywhere
        corner(x, y, "m");
        for (unsigned i = 2 + choose(3); i > 0; --i) corner(choose(8), choose(8), "l");
        break;
      default: {  // a cell, or half of it
        const unsigned first = choose(4);
        const unsigned step = choose(4) == 0 ? 3 : 1;
        const unsigned n = 3 + choose(2);
        for (unsigned i = 0; i < n; ++i) {
          const auto& at = cell[(first + i * step) % 4];
          corner(at[0], at[1], i == 0 ? "m" : "l");
        }
        if (choose(4) == 0) corner(cell[first][0], cell[first][1], "l");
      }
    }
    if (choose(3) != 0) write("h");
    if (choose(6) == 0) corner(x, y, "m");
  };
  write(choose(2) == 0 ? "1 j .3 w 0 g 0 G" : "1 j 1.25 w");
  for (unsigned n = 10 + choose(50); n > 0; --n) {
    switch (choose(16)) {
      case 0: number(2), write("g"); break;
      case 1: pick({".50 0 1.0 rg", "0.5 0 1 rg", "1 0 0 rg", "0 0 0 rg"}); break;
      case 2:
        pick({"/S cs", "/S cs .5 sc", "/S cs 0.5 scn", "/T cs 1 .5 scn", "/DeviceRGB cs"});
        break;
      case 3: pick({"0 G", "1 G", "0.5 0 1 RG", "1 0 0 RG", "/S CS .5 SC"}); break;
      case 4:
        pick({".3 w", "1.25 w", "0 J", "1 J", "10 M", "[] 0 d", "[] 2 d", "[3 1] 0 d"});
        break;
      case 5:
        write("q");
        ++depth;
        break;
      case 6:
        if (depth > 0) write("Q"), --depth;
        break;
      case 7:
        pick({"/X Do", "/A gs", "/Half gs", "1 0 0 1 0 0 cm", "1 0 .5 1 0 0 cm", "1 0 0 1 1 0 cm",
              "/Line gs", "n", "q 0 g 0 G Q", "0 0 7 5 re W n"});
        break;
      case 8: {  // filled, then drawn round
        const std::size_t begin = text.size();
        add_path();
        const std::string path = text.substr(begin);
        pick({"f", "f*", "f 0 G", "f 1 0 0 RG"});
        write(path);
        pick({"S", "s"});
        break;
      }
      default:
        for (unsigned parts = choose(5) == 0 ? 2 : 1; parts > 0; --parts) add_path();
        pick({"f", "f", "f", "f", "F", "f*", "B", "b", "B*", "b*", "S"});
    }
  }
  for (; depth > 0; --depth) write("Q");
  return text;
}

}  // namespace trellion::pdf::testing
