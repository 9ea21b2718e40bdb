// Writing DDS files in the layout the engine's texture reader takes: uncompressed BGRA or the
// DXT1 and DXT5 block formats, with or without the chain of smaller levels.
#pragma once

#include <string>

#include "krImage.h"

enum class krTextureFormat { bgra, dxt1, dxt5 };

// The whole file.
std::string krEncodeDds(const krImage& image, krTextureFormat format, bool mipmaps);
