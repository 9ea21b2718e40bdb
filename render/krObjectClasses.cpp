// The factories through which scripts make scene objects.
#include "render/krObjectClasses.h"

#include "render/krObject.h"
#include "script/krFactory.h"
#include "script/krSymbols.h"

void krRegisterSceneClasses() { krSymbols::addFunction("new_object", krMakeModule<krObject>, 0); }
