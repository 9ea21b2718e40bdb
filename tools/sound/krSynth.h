// krSynth: the sounds the content tools make from nothing: test tones, the engine hum of the
// vehicles and the demo's music. Everything is computed, so the same call gives the same samples.
#pragma once

#include "krPcm.h"

// A sine of the given frequency and peak (0 to 1) in every channel, starting at phase 0.
krPcm krSynthTone(float frequency, float seconds, uint32_t rate, uint16_t channels, float peak);

// One second of a combustion engine's hum, mono, that loops without a seam: its firing rate and
// every harmonic fit the second a whole number of times. Pitched up and down, it follows the
// engine's speed.
krPcm krSynthEngineHum();

// A short stereo piece of a chord progression with bass, arpeggio and hi-hat, whose end leads back
// into its start, so that it loops.
krPcm krSynthMusic();
