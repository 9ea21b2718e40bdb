// Clocks for scripts: krTimerClock fires "timeout" after some seconds (again for as long as its
// handler returns true); krClock is an in-game clock that runs at any speed.
#pragma once

#include "core/krModule.h"

class krTimerClock : public krModule {
public:
    krTimerClock(krModule* owner, float interval);
    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    bool update(float dt) override;
    const char* className() const override { return "krTimerClock"; }
    static const krClassInfo info;

private:
    float interval;
    float remaining;
};

class krClock : public krModule {
public:
    krClock(krModule* owner, int32_t startTime);
    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    bool update(float dt) override;
    const char* className() const override { return "krClock"; }
    static const krClassInfo info;

    int32_t getTime() const { return time; }

    // The buffer that `format` writes into.
    static constexpr size_t formatBytes = 256;

private:
    float speed = 1;
    float fraction = 0;
    int32_t time;
    int32_t mseconds = 0;
    int32_t seconds = 0;
    int32_t minutes = 0;
    int32_t hours = 0;
};
