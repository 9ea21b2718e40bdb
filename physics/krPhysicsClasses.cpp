// What scripts can make and name of the physics subsystem: factories, class tables, constants.
#include "physics/krPhysicsClasses.h"

#include "physics/krCollisionObject.h"
#include "physics/krPhysObj.h"
#include "physics/krPhysics.h"
#include "physics/krStaticObj.h"
#include "physics/krTrigger.h"
#include "script/krBlock.h"
#include "script/krClassInfo.h"
#include "script/krFactory.h"
#include "script/krSymbols.h"
#include "script/krVObject.h"

namespace {

// makePhysContainer(object): a body around an object that exists, placed where the object's
// bounds are centred, with the object below it.
krVariant* makePhysContainer(krBlock* caller, const krArgs& args) {
    if (args.size() != 1) return nullptr;
    auto* object = dynamic_cast<krObject*>(krScriptObject::fromHandle(args[0]->toInt()));
    if (!object) return reportError(caller, "makePhysContainer needs an object");
    krModule* owner = object->getOwner();
    auto* body = new krPhysObj(owner);
    krVariant* result = krFactory::attachAndReturn(body);
    const krVector3 centre = object->localBox.min.x <= object->localBox.max.x ? object->localBox.centre() : krVector3();
    body->setOrientation(object->rotation);
    body->setPosition(object->position + rotate(object->rotation, centre));
    object->setOwner(body);
    object->rotation = krQuat::identity;
    object->setPosition(-centre);
    body->containObject(*object);
    return result;
}

}  // namespace

void krRegisterPhysicsClasses() {
    krSymbols::addFunction("new_physics", krMakeModule<krPhysics>, 0, "(owner?): a simulated world");
    krSymbols::addFunction("new_physicObject", krMakeModule<krPhysObj>, 0, "(owner?): a rigid body, asleep");
    krSymbols::addFunction("new_staticObject", krMakeModule<krStaticObj>, 0,
                           "(owner?): level geometry; its first mesh is what bodies collide with");
    krSymbols::addFunction("makePhysContainer", makePhysContainer, 0,
                           "(object): a rigid body around the object, which moves below it");
    krClasses::add(krCollisionObject::info);
    krClasses::add(krStaticObj::info);
    krClasses::add(krPhysObj::info);
    krClasses::add(krPhysics::info);
    krClasses::add(krTrigger::info);

    using krSymbols::addInt;
    // Collision styles.
    addInt("NONE", krCollNone);
    addInt("BOX", krCollBox);
    addInt("SPHERE", krCollSphere);
    addInt("MESH", krCollMesh);
    // Surfaces of materials.
    addInt("PHYSIC_NONE", krPhysicNone);
    addInt("PHYSIC_DEFAULT", krPhysicDefault);
    addInt("PHYSIC_WATER", krPhysicWater);
    // Kinds of damage.
    addInt("DAMAGE_BULLET", krDamageBullet);
    addInt("DAMAGE_COLLISION", krDamageCollision);
}
