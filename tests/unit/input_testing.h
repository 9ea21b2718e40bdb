// Helpers of the input and camera tests: the root with the script host and its library in a
// fresh working directory, the reports the root sends, and scripts run from text.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/krFileIndex.h"
#include "core/krMain.h"
#include "script/krBlock.h"
#include "script/krScript.h"
#include "script/krScripting.h"

namespace inputTesting {

inline std::vector<std::string>& reports() {
    static std::vector<std::string> seen;
    return seen;
}

inline void observe(const char* event, const std::string& text) {
    if (std::string(event) == "errorMsg") reports().push_back(text);
}

inline void forwardToRoot(const std::string& text) {
    if (krMain* root = krMain::instance()) root->errorMsg(text);
}

class Engine : public testing::Test {
protected:
    void SetUp() override {
        previous = std::filesystem::current_path();
        dir = std::filesystem::temp_directory_path() /
              ("kerrin-input-" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + "-" +
               std::to_string(::getpid()));
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir);
        std::filesystem::current_path(dir);
        krFileIndex::forget();
        reports().clear();
        krMain::setReportObserver(observe);
        root = new krMain(0, nullptr);
        root->attach();
        host = new krScripting(root);
        host->attach();
        krLibrary::registerLanguage();
        krScriptErrors::setErrorHandler(forwardToRoot);
        krLibrary::registerHost();
        krLibrary::registerConstants();
    }

    void TearDown() override {
        for (krScript* s : scripts) delete s;
        host->deinit();
        root->deinit();
        host->release();
        root->release();
        krScriptErrors::setErrorHandler(krScriptErrors::defaultHandler());
        krMain::setReportObserver(nullptr);
        std::filesystem::current_path(previous);
        std::filesystem::remove_all(dir);
        krFileIndex::forget();
    }

    static void write(const std::string& path, const std::string& content) {
        std::ofstream(path, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
        krFileIndex::forget();
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

    static std::string field(krScript* s, const std::string& name) {
        krVariant* v = s->getField(name);
        std::string text = v ? v->toString() : "(none)";
        if (v) v->release();
        return text;
    }

    template <class T>
    T* make(krModule* owner = nullptr) {
        auto* m = new T(owner ? owner : root);
        m->attach();
        return m;
    }

    krMain* root = nullptr;
    krScripting* host = nullptr;
    std::vector<krScript*> scripts;
    std::filesystem::path previous, dir;
};

}
