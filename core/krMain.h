// krMain: the root of the object tree, the frame loop's entry into it, and the engine's two report
// channels. Every engine message leaves through errorMsg or infoMsg as an event on the root.
#pragma once

#include "core/krModule.h"

class krMain : public krModule {
public:
    krMain(int argc, char** argv);
    ~krMain() override;

    static const krClassInfo info;

    // The one root of the process; valid from its construction to its destruction.
    static krMain* instance() { return root; }

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    bool update(float dt) override;
    krVector3 getVelocityAt(const krVector3&) override { return krVector3(); }
    const char* className() const override { return "krMain"; }

    void errorMsg(const std::string& text);
    void infoMsg(const std::string& text);

    // Engine code that must see every report as well (tests, tools) installs an observer; it is
    // told before the script handlers run.
    using ReportObserver = void (*)(const char* event, const std::string& text);
    static void setReportObserver(ReportObserver observer) { reportObserver = observer; }

    int getArgc() const { return argc; }
    char** getArgv() const { return argv; }
    float getFramePeriod() const { return framePeriod; }
    void setFpsLimit(float fps) { framePeriod = fps > 0 ? 1.0f / fps : 0.0f; }
    float getFpsLimit() const { return framePeriod > 0 ? 1.0f / framePeriod : 0.0f; }

    // The fixed step of the script method `move`.
    static constexpr float moveStep = 0.001f;

private:
    void report(const char* event, const std::string& text);

    static krMain* root;
    static ReportObserver reportObserver;
    int argc;
    char** argv;
    std::string test;
    float framePeriod = 0;
};
