// The script host in process: a whole engine start and teardown leaves no value and no block
// behind, and the first script's name comes from "-i".
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "core/krFileIndex.h"
#include "core/krMain.h"
#include "platform/krSystem.h"
#include "script/krBlock.h"
#include "script/krScripting.h"

namespace {

TEST(Host, FirstScriptNameComesFromTheOptionBeforeTheLastArgument) {
    char prog[] = "kerrin", opt[] = "-i", name[] = "other.script";
    char* withName[] = {prog, opt, name};
    EXPECT_EQ(krScripting::firstScriptName(3, withName), "other.script");
    char* optionLast[] = {prog, name, opt};
    EXPECT_EQ(krScripting::firstScriptName(3, optionLast), "init.script") << "-i as the last argument has no name";
    char* none[] = {prog};
    EXPECT_EQ(krScripting::firstScriptName(1, none), "init.script");
}

TEST(Host, TeardownLeavesNoValuesAndNoBlocks) {
    const auto previous = std::filesystem::current_path();
    const auto dir = std::filesystem::temp_directory_path() / ("kerrin-host-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    std::filesystem::current_path(dir);
    krFileIndex::forget();
    std::ofstream("first.script") << R"(
        load("resident.script");
        $m = new_module(); $m.tag = [1, [2, "x"], macro("1 + $1", 2)];
        GLOBALS["kept"] = [3, 4];
        event $m: custom($a) { return $a; }
        $clock = clock(); $t = timer(5);
        function unused($p) { return [$p]; }
        quit;
    )";
    std::ofstream("resident.script") << R"(
        $state = ["a" + 1, 2.5];
        event MAIN: errorMsg($t) { $last = $t; }
        destructor { $state = 0; }
    )";

    const int32_t values = krVariant::instanceCount;
    const int32_t blocks = krBlock::instanceCount;
    {
        char prog[] = "kerrin", opt[] = "-i", name[] = "first.script";
        char* argv[] = {prog, opt, name};
        auto* root = new krMain(3, argv);
        root->attach();
        auto* host = new krScripting(root);
        host->attach();
        EXPECT_TRUE(root->init());
        EXPECT_TRUE(root->update(0.01f));
        host->deinit();
        root->deinit();
        krModule::releaseOrphans();
        host->release();
        root->release();
    }
    EXPECT_EQ(krVariant::instanceCount, values);
    EXPECT_EQ(krBlock::instanceCount, blocks);
    krSystem::clearQuit();

    std::filesystem::current_path(previous);
    std::filesystem::remove_all(dir);
    krFileIndex::forget();
}

} // namespace
