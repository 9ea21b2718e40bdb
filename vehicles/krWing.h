// krWing: a lifting surface of a body. Each substep it works out lift and drag from the airflow
// at its own point and adds them to its owner; an aircraft's handling comes from where its wings
// sit, their areas and the hinge angles of the control surfaces.
#pragma once

#include <cstdint>

#include "core/krModule.h"
#include "core/krQuat.h"
#include "core/krVector3.h"

class krObject;

class krWing : public krModule {
public:
    explicit krWing(krModule* owner) : krModule(owner) {}
    const char* className() const override { return "krWing"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    // Lift, induced drag and the flat-plate force on the owner, then the linked surface's hinge.
    bool update(float dt) override;
    virtual void setDirectionVector(const krVector3& d) { direction = d; }
    virtual void setRotation(const krQuat& q) { rotation = q; }
    // Turns the hinge to angle radians about the axis.
    virtual void setAngle(float angle);

    // Null when none is set or it has gone.
    krObject* getLinked() const;

    // Centre of pressure in the owner's axes.
    krVector3 position;
    // Wing normal in the owner's axes before the hinge turns it.
    krVector3 direction{0, 1, 0};
    // Hinge axis in the owner's axes.
    krVector3 axis{1, 0, 0};
    krQuat rotation = krQuat::identity;
    // Scales every force.
    float area = 1.0f;
    // Hinge point of the linked surface, in its parent's axes.
    krVector3 linkPivot;

private:
    // The visual surface that follows the hinge, held by handle.
    int32_t linked = 0;
};
