// The camera factories: each takes an optional owner, krMain by default.
#include "interface/krCameraClasses.h"

#include "interface/krCameraFlying.h"
#include "interface/krCameraFollow.h"
#include "script/krFactory.h"
#include "script/krSymbols.h"

void krRegisterCameraClasses() {
    krSymbols::addFunction("new_flyingCamera", krMakeModule<krFlyingCamera>, 0);
    krSymbols::addFunction("new_floatingCamera", krMakeModule<krFloatingCamera>, 0);
    krSymbols::addFunction("new_fixedCamera", krMakeModule<krFixedCamera>, 0);
}
