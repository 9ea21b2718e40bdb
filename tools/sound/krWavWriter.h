// krWavWriter: samples to a PCM WAV file image (RIFF, one "fmt " and one "data" chunk).
#pragma once

#include <string>

#include "krPcm.h"

std::string krEncodeWav(const krPcm& pcm);
