// Registration of the window and viewport factories with the script host.
#pragma once

// Adds new_window and new_viewport.
void krRegisterVideoClasses();
