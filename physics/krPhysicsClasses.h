// The physics subsystem's entry in the script library.
#pragma once

// Registers the constants of collision styles, surfaces and damage kinds.
void krRegisterPhysicsClasses();
