// Timer and clock modules.
#include "interface/krClock.h"

#include <ctime>

#include "script/krClassInfo.h"
#include "script/krVBound.h"

namespace {

const krMemberInfo timerMembers[] = {
    {"cancel", krCall, "()", "deletes the timer"},
    {"restart", krCall, "()", "counts the whole interval again"},
};

const krEventInfo timerEvents[] = {
    {"timeout", "()", "the interval has passed; return true to run again, else the timer deletes itself"},
};

const krMemberInfo clockMembers[] = {
    {"speed", krRead | krWrite, "float", "clock seconds a real second; negative runs backwards"},
    {"time", krRead | krWrite, "int", "whole seconds"},
    {"mseconds", krRead, "int", "milliseconds, -999 to 999"},
    {"seconds", krRead, "int", "time modulo 60"},
    {"minutes", krRead, "int", "time / 60 modulo 60"},
    {"hours", krRead, "int", "time / 3600 modulo 24"},
    {"format", krCall, "(pattern)", "the time as local time through strftime"},
};

}

const krClassInfo krTimerClock::info = {"krTimerClock", "krModule", "timer", timerMembers, timerEvents,
                                        "fires \"timeout\" after its interval"};
const krClassInfo krClock::info = {"krClock", "krModule", "clock", clockMembers, {},
                                   "an in-game clock running at any speed"};

krTimerClock::krTimerClock(krModule* o, float i) : krModule(o), interval(i), remaining(i) {}

krVariant* krTimerClock::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    if (name == "cancel" && args.empty()) {
        dispose();
        return nullptr;
    }
    if (name == "restart" && args.empty()) {
        remaining = interval;
        return nullptr;
    }
    return krModule::getMember(name, caller, args);
}

bool krTimerClock::update(float dt) {
    remaining -= dt;
    if (remaining > 0) return true;
    krVariant* result = fireEvent("timeout", noArgs);
    const bool goOn = result && result->toBool();
    if (result) result->release();
    if (goOn) {
        // Growing by the interval keeps the period on average, even across a long frame.
        remaining += interval;
    } else {
        // A handler may have cancelled the timer already; then this does nothing.
        dispose();
    }
    return true;
}

krClock::krClock(krModule* o, int32_t startTime) : krModule(o), time(startTime) {}

krVariant* krClock::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    if (name == "speed") return new krVFloatPtr(&speed, this);
    if (name == "time") return new krVIntPtr(&time, this);
    if (name == "mseconds") return new krVIntPtr(&mseconds, this);
    if (name == "seconds") return new krVIntPtr(&seconds, this);
    if (name == "minutes") return new krVIntPtr(&minutes, this);
    if (name == "hours") return new krVIntPtr(&hours, this);
    if (name == "format" && args.size() == 1) {
        const std::time_t t = time;
        std::tm local{};
        localtime_r(&t, &local);
        char buffer[formatBytes];
        const size_t n = std::strftime(buffer, sizeof buffer, args[0]->toString().c_str(), &local);
        return new krVString(std::string(buffer, n));
    }
    return krModule::getMember(name, caller, args);
}

void krClock::setMember(const std::string& name, krVariant* value) {
    if (name == "speed") speed = value->toFloat();
    else if (name == "time") time = value->toInt();
    else krModule::setMember(name, value);
}

bool krClock::update(float dt) {
    const float t = dt * speed + fraction;
    const int32_t ms = krConvert::floatToInt(t * 1000.0f);
    fraction = t - static_cast<float>(ms) * 0.001f;
    // Wide sums: a clock at an absurd speed wraps its time instead of overflowing.
    const int64_t total = static_cast<int64_t>(mseconds) + ms;
    mseconds = static_cast<int32_t>(total % 1000);
    time = static_cast<int32_t>(static_cast<uint32_t>(time) + static_cast<uint32_t>(total / 1000));
    seconds = time % 60;
    minutes = time / 60 % 60;
    hours = time / 3600 % 24;
    return true;
}
