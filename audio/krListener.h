// krListener: where the ears are, at an offset in the space of a tracked object (or of the world).
// The last one built is in force until any listener is destroyed.
#pragma once

#include "core/krModule.h"
#include "core/krQuat.h"
#include "script/krClassInfo.h"

class krListener : public krModule {
public:
    static const krClassInfo info;

    explicit krListener(krModule* owner);
    ~krListener() override;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    const char* className() const override { return "krListener"; }

    bool update(float dt) override;

    void setVolume(float value);
    // Null for none; any module serves, by its matrix and velocity.
    void setTracked(krModule* module);
    krModule* getTracked() const;
    void setPosition(const krVector3& p) { offset = p; }
    void setOrientation(const krQuat& q) { orientation = q; }
    const krVector3& getWorldPosition() const { return worldPosition; }

private:
    float volume = 1;
    krVector3 offset;
    krQuat orientation = krQuat::identity;
    krVector3 worldPosition;
    // A handle, not a pointer: the tracked object may go without telling the listener.
    int32_t tracked = 0;
};
