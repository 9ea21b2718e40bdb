// What scripts can make and name of the physics subsystem: factories, class tables, constants.
#include "physics/krPhysicsClasses.h"

#include "script/krSymbols.h"

void krRegisterPhysicsClasses() {
    using krSymbols::addInt;
    // Collision styles.
    addInt("NONE", 0);
    addInt("BOX", 1);
    addInt("SPHERE", 2);
    addInt("MESH", 3);
    // Surfaces of materials.
    addInt("PHYSIC_NONE", 0);
    addInt("PHYSIC_DEFAULT", 1);
    addInt("PHYSIC_WATER", 2);
    // Kinds of damage.
    addInt("DAMAGE_BULLET", 1);
    addInt("DAMAGE_COLLISION", 2);
}
