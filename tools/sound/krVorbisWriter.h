// krVorbisWriter: samples to an Ogg Vorbis file image, through the Vorbis encoder library.
#pragma once

#include <string>

#include "krPcm.h"

// Encodes at a variable bit rate of the given quality (-0.1 to 1). False, with the reason in
// error, when the encoder does not take the channel count, rate or quality.
bool krEncodeVorbis(const krPcm& pcm, float quality, std::string& out, std::string& error);
