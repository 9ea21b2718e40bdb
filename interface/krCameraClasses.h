// Registration of the camera factories with the script host.
#pragma once

// Adds new_flyingCamera, new_floatingCamera and new_fixedCamera.
void krRegisterCameraClasses();
