// S3TC block compression: each 4x4 block of pixels in 8 (DXT1) or 16 (DXT5) bytes. The colour
// endpoints are the block's two most different pixels and the alpha endpoints its extremes: a
// plain fit that keeps flat areas, edges and gradients right.
#pragma once

#include <string>

#include "krImage.h"

// Appends the blocks, rows of blocks from the top. DXT1 keeps one bit of alpha: pixels below
// half opacity become transparent.
void krCompressDXT1(const krImage& image, std::string& out);
// Appends the blocks with their interpolated alpha.
void krCompressDXT5(const krImage& image, std::string& out);
