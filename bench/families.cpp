#include "families.h"

namespace bench {

std::span<const family> all_families() {
  static constexpr family families[] = {
      {"contour", "quads in twelve levels of a smooth field, level by level", write_contour},
      {"tri", "triangles on moved grid points, level by level", write_tri},
      {"rows", "the quads of contour row by row, so that the colour changes often", write_rows},
      {"one", "quads in one colour", write_one},
      {"mixed", "the same in either sense, from any vertex", write_mixed},
      {"shuffle", "the same in random order", write_shuffle},
      {"isolated", "squares with gaps, nothing shared", write_isolated},
      {"gear", "large zigzag outlines, each notch filled by a triangle", write_gear},
      {"bumps", "one large zigzag outline, each edge with a triangle outside", write_bumps},
      {"book", "triangles that all share one edge", write_book},
      {"collide", "triangles, an edge of each made to collide in a hash table", write_collide},
      {"words", "pairs of triangles, a name for moveto to each, made to collide too", write_words},
      {"stack", "one triangle again and again", write_stack},
      {"kites", "quads that all share the same two edges", write_kites},
      {"ladder", "two large zigzag outlines, and quads as rungs between them", write_ladder},
      {"fan", "triangles that all share one corner", write_fan},
      {"numbers", "long stretches of numbers with a small mesh among them", write_numbers},
      {"text", "other PostScript with a small mesh among it", write_text},
  };
  return families;
}

}  // namespace bench
