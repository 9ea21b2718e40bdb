// Plain file reading for scripts against what is not a plain file.
#include <sys/stat.h>

#include "engine_testing.h"

namespace {
using HostFiles = engineTesting::Engine;
}

TEST_F(HostFiles, AFifoIsRefusedWithoutWaitingForAWriter) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    krScript* s = run("$text = file(\"pipe\"); $after = 1;");
    EXPECT_EQ(field(s, "text"), "(none)");
    EXPECT_EQ(field(s, "after"), "1");
    ASSERT_EQ(engineTesting::reports().size(), 1u);
    EXPECT_NE(engineTesting::reports()[0].find("Cannot open file \"pipe\" (not a regular file)"), std::string::npos);
}
