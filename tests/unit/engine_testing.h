// Shared helpers of the tests that run engine code in process: a fresh working directory with
// its own file index, the reports the root sends, and a root with the script host and its
// library, running script text.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/krFileIndex.h"
#include "core/krMain.h"
#include "krProgram.h"
#include "script/krBlock.h"
#include "script/krScript.h"
#include "script/krScripting.h"

namespace engineTesting {

// The errorMsg texts the root sent since the test began.
inline std::vector<std::string>& reports() {
    static std::vector<std::string> seen;
    return seen;
}

inline void observe(const char* event, const std::string& text) {
    if (std::string(event) == "errorMsg") reports().push_back(text);
}

// Writes a file, with the folders it needs; the index does not see it before it is built again.
inline void writeFile(const std::string& path, const std::string& content) {
    const std::filesystem::path p(path);
    if (p.has_parent_path()) std::filesystem::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
}

// A file written during a test that is found: the index is built again at the next open.
inline void write(const std::string& path, const std::string& content) {
    writeFile(path, content);
    krFileIndex::forget();
}

// A fresh temporary working directory named after the test, left again (and its index
// forgotten) when the test ends.
class ScratchDir {
public:
    explicit ScratchDir(const std::string& prefix) : previous(std::filesystem::current_path()) {
        dir = std::filesystem::temp_directory_path() /
              (prefix + "-" + testing::UnitTest::GetInstance()->current_test_info()->name() + "-" +
               std::to_string(::getpid()));
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir);
        std::filesystem::current_path(dir);
        krFileIndex::forget();
    }
    ~ScratchDir() {
        std::filesystem::current_path(previous);
        std::filesystem::remove_all(dir);
        krFileIndex::forget();
    }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

private:
    std::filesystem::path previous, dir;
};

// The root, the script host with its library, and scripts run from text, in a scratch directory;
// reports collected. Torn down in the engine's own order.
class Engine : public testing::Test {
protected:
    void SetUp() override {
        scratch = new ScratchDir("kerrin-engine");
        reports().clear();
        krMain::setReportObserver(observe);
        krProgram::start(0, nullptr);
        root = krProgram::root();
        host = krProgram::host();
    }

    void TearDown() override {
        for (krScript* s : scripts) delete s;
        krProgram::stop();
        krScriptErrors::setErrorHandler(krScriptErrors::defaultHandler());
        krMain::setReportObserver(nullptr);
        delete scratch;
    }

    // Runs script text; the script stays (with its event bindings) until the test ends.
    krScript* run(const std::string& text) {
        auto* s = new krScript();
        s->setHost(host);
        s->setFile("test.script");
        s->load(text.c_str());
        if (krVariant* r = s->eval()) r->release();
        scripts.push_back(s);
        return s;
    }

    static void write(const std::string& path, const std::string& content) { engineTesting::write(path, content); }

    // A global of a script that ran, as text.
    static std::string field(krScript* s, const std::string& name) {
        krVariant* v = s->getField(name);
        std::string text = v ? v->toString() : "(none)";
        if (v) v->release();
        return text;
    }

    // A module of class T under `owner` (the root when none is given), attached.
    template <class T>
    T* make(krModule* owner = nullptr) {
        auto* m = new T(owner ? owner : root);
        m->attach();
        return m;
    }

    krMain* root = nullptr;
    krScripting* host = nullptr;
    std::vector<krScript*> scripts;

private:
    ScratchDir* scratch = nullptr;
};

}  // namespace engineTesting
