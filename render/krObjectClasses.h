// The scene classes' entries in the script library.
#pragma once

// Registers the factories of objects (new_object) with the script host.
void krRegisterSceneClasses();
