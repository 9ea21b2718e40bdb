// The rendering subsystem's entry in the script library.
#pragma once

// Registers the factories of windows, viewports and scene objects, the tables of their members,
// and the constants of video types, shader languages, vertex attributes and animation flags.
void krRegisterRenderClasses();
