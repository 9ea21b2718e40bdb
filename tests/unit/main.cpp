// Test entry: records the stack base (deep-recursion guards measure from it) and runs every test.
#include <gtest/gtest.h>

#include "platform/krSystem.h"

int main(int argc, char** argv) {
    krSystem::markStackBase();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
