// The physics subsystem's entry in the script library.
#pragma once

// Registers the world, body and level geometry factories, makePhysContainer, the class tables,
// and the constants of collision styles, surfaces and damage kinds.
void krRegisterPhysicsClasses();
