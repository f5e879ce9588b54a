#pragma once

#include "v3_engine.h"

namespace trellion::testing {

/// Does what v3_process does by comparing every path with every other one: the reference that the
/// engine is held against.
void plain_process(path_store& store, strata& strata, std::int32_t merge_limit,
                   text_writer& console);

}  // namespace trellion::testing
