// The vehicles subsystem's entry in the script library.
#pragma once

// Registers the constants of control flags and of the human animation tracks and states.
void krRegisterVehicleClasses();
