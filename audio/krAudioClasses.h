// The audio subsystem's entry in the script library, and its end.
#pragma once

// Registers enable_sounds, the factories of sounds, music and listeners, and their class tables.
void krRegisterAudioClasses();
// Lets go of the sound buffers, the context and the device at the end of the run.
void krCloseAudio();
