// The interface subsystem's entry in the script library.
#pragma once

// Registers the camera factories, the tables of their members, and the constants of borders and
// alignment.
void krRegisterInterfaceClasses();
