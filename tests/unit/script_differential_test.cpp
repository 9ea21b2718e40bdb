// The evaluator against the block tree that defines the language: generated programs run, and
// what each shows (its prints, its error reports, the variables it leaves and the value of its
// main code) must hash to what the tree-walking evaluator showed for the same program. The
// hashes were written by that evaluator; KERRIN_DIFF_WRITE=file writes them anew (when the
// language's output changes on purpose), KERRIN_DIFF_DUMP=folder keeps each program with what
// it showed, and KERRIN_DIFF_SEEDS=first:count only dumps other programs, for comparing builds.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "core/krMain.h"
#include "krProgram.h"
#include "platform/krSystem.h"
#include "script/krScript.h"
#include "script/krScripting.h"
#include "script/krSymbols.h"
#include "script_programs.h"

namespace {

// Programs compared on every run; their hashes are kept in the file below.
constexpr uint64_t programCount = 3000;
// Loop passes and calls one program may spend; both evaluators spend them at the same points.
constexpr int64_t stepBudget = 20000;
const char* const goldenFile = KERRIN_TEST_DATA "/script_differential.hashes";

std::string shown;

krVariant* capture(krBlock*, const krArgs& args) {
    if (args.size() == 1) shown += args[0]->toString() + "\n";
    return nullptr;
}

// Reports of the parser come before the program binds errorMsg; all are kept in order.
void observe(const char* event, const std::string& text) { shown += std::string(event) + ": " + text + "\n"; }

// Runs one program in an engine of its own and returns all it showed.
std::string run(const std::string& text) {
    shown.clear();
    krProgram::start(0, nullptr);
    krMain::setReportObserver(observe);
    krSymbols::addFunction("print", capture, 0, "(text): kept by the test");
    krScript::setStepLimit(stepBudget);
    auto* script = new krScript();
    script->setHost(krProgram::host());
    script->setFile("diff.script");
    script->load(text.c_str());
    if (krVariant* result = script->eval()) {
        shown += "value " + result->toLiteral() + "\n";
        result->release();
    }
    for (const std::string& name : scriptPrograms::Generator::fieldNames()) {
        krVariant* v = script->getField(name);
        shown += "$" + name + " = " + (v ? v->toLiteral() : "(none)") + "\n";
        if (v) v->release();
    }
    delete script;
    krScript::setStepLimit(-1);
    krProgram::stop();
    krMain::setReportObserver(nullptr);
    krSystem::clearQuit();
    return shown;
}

uint64_t hash(const std::string& text) {
    uint64_t h = 0xCBF29CE484222325ull;
    for (unsigned char c : text) h = (h ^ c) * 0x100000001B3ull;
    return h;
}

TEST(ScriptDifferential, GeneratedProgramsShowWhatTheTreeShowed) {
    std::vector<uint64_t> golden;
    if (const char* write = std::getenv("KERRIN_DIFF_WRITE")) {
        std::ofstream out(write);
        for (uint64_t seed = 0; seed < programCount; ++seed) {
            scriptPrograms::Generator generator(seed);
            out << std::hex << hash(run(generator.program())) << "\n";
        }
        GTEST_SKIP() << "hashes written to " << write;
    }
    if (const char* seeds = std::getenv("KERRIN_DIFF_SEEDS")) {
        const char* dump = std::getenv("KERRIN_DIFF_DUMP");
        ASSERT_TRUE(dump) << "KERRIN_DIFF_SEEDS needs KERRIN_DIFF_DUMP";
        const uint64_t first = std::stoull(seeds);
        const uint64_t count = std::stoull(std::strchr(seeds, ':') ? std::strchr(seeds, ':') + 1 : "1");
        for (uint64_t seed = first; seed < first + count; ++seed) {
            scriptPrograms::Generator generator(seed);
            const std::string program = generator.program();
            std::ofstream(std::string(dump) + "/" + std::to_string(seed) + ".script") << program;
            std::ofstream(std::string(dump) + "/" + std::to_string(seed) + ".out") << run(program);
        }
        GTEST_SKIP() << "programs dumped to " << dump;
    }
    std::ifstream in(goldenFile);
    ASSERT_TRUE(in) << goldenFile;
    for (std::string line; std::getline(in, line);) golden.push_back(std::stoull(line, nullptr, 16));
    ASSERT_EQ(golden.size(), programCount);

    const char* dump = std::getenv("KERRIN_DIFF_DUMP");
    int failures = 0;
    for (uint64_t seed = 0; seed < programCount; ++seed) {
        scriptPrograms::Generator generator(seed);
        const std::string program = generator.program();
        const std::string output = run(program);
        if (dump) {
            std::ofstream(std::string(dump) + "/" + std::to_string(seed) + ".script") << program;
            std::ofstream(std::string(dump) + "/" + std::to_string(seed) + ".out") << output;
        }
        if (hash(output) != golden[seed] && ++failures <= 3)
            ADD_FAILURE() << "program " << seed << " shows something else:\n" << program << "\n--- shows\n" << output;
    }
    EXPECT_EQ(failures, 0);
}

}  // namespace
