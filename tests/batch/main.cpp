#include <gtest/gtest.h>

#include "batch/supervisor.h"

int main(int argc, char* argv[]) {
  // The tests start children, too, and this is the executable that supervises them.
  trellion::batch::supervise_if_asked(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
