// Dynamic items: what changes from frame to frame (interface quads and text, tracer and skeleton
// lines, particles) is drawn from small records that the owner keeps in its own memory. The owner
// asks its video once for an item (krVideo::createDynamicItem, createTextItem); the item reads the
// record every time it draws, so writing the record's fields changes what is drawn. A new texture
// name goes through krVideo::setItemData. The record must outlive its item. An owner drops an
// item by deleting it; otherwise it goes with the module's item list when the module goes.
//
// This header is the whole interface owners need; the items themselves belong to the video.
#pragma once

#include <cstdint>
#include <string>

#include "core/krColor.h"
#include "core/krVector3.h"
#include "render/krMesh.h"

// What the `kind` of createDynamicItem and createTextItem is made of.
namespace krDynamicKind {
// Drawn in the 2D overlay: no normals, no shader unbinding, no colour material.
constexpr int32_t flat = 0x1;
// Without it no item is made.
constexpr int32_t required = 0x2;
// The primitive a vertex list is drawn as; with several, the highest wins.
constexpr int32_t quads = 0x4;
constexpr int32_t quadStrip = 0x8;
constexpr int32_t lines = 0x10;
constexpr int32_t lineStrip = 0x20;
constexpr int32_t noCulling = 0x40;
// Into the alpha queue, sorted far to near, instead of drawing as the walk reaches it.
constexpr int32_t alpha = 0x80;
// The record's points array instead of its vertices.
constexpr int32_t points = 0x100;

// The kinds the engine's owners use.
constexpr int32_t interfaceQuads = flat | required | quads;
constexpr int32_t interfaceText = flat | required;
constexpr int32_t skeletonLines = required | lines;
constexpr int32_t tracers = required | quads | alpha;
constexpr int32_t particles = required | alpha | points;
}  // namespace krDynamicKind

// Blending of a points item, in the record's `flags` beside the material flags.
constexpr int32_t krMaterialAdditive = 0x80;
constexpr int32_t krMaterialAdditiveAlpha = 0x100;

// One point of a points item: where it is (world space), its colour, and its size as a factor on
// the record's pointSize.
struct krPointVertex {
    krVector3 position;
    krColor color;
    float size = 1;
};
static_assert(sizeof(krPointVertex) == 20);

// The record of a primitive or points item: the arrays and count, then the shape of a material
// (of which the items read the first texture name, the shader name and the flags).
struct krDynamicData {
    // Primitives: `count` vertices in the layout of mesh files.
    krVertex* vertices = nullptr;
    // Points: `count` points.
    krPointVertex* points = nullptr;
    int32_t count = 0;
    std::string textures[krTextureSlots];
    // Points drawn by a program; empty takes defaultPointShader.
    std::string shader;
    int32_t flags = 0;
    krColor ambient, diffuse, specular, emission;
    float shininess = 0;
    uint8_t surface = krSurfaceDefault;
    // Points: the size of a point of factor 1, in world units.
    float pointSize = 1;

    static constexpr const char* defaultPointShader = "shaders/points/default.shader";
};

// The record of a text item. Text is laid out in units of the font height, scaled by `size` and
// placed at `position`: a tab moves to the next multiple of 3 from the start of the text, a line
// feed to the start of the next line, 1.25 heights down. Byte 4 starts a colour code: the eight
// bytes after it are a hex colour (RRBBGGAA) for what follows.
struct krTextData {
    // NUL-terminated and owned by the owner; null draws nothing.
    const char* text = nullptr;
    // The font's name, e.g. krDefaultFont.
    std::string font;
    krVector3 position;
    // x scales widths, y is the font height.
    krVector3 size{1, 1, 1};
    // Where the shadow lies, from `position`.
    krVector3 shadowOffset;
    krColor color;
    // Drawn behind each glyph; alpha 0 for none.
    krColor background = krColor::none;
    // Alpha 0 draws no shadow.
    krColor shadowColor = krColor::none;
    // Where the first line starts, in units of size.x; later lines start at 0.
    float startX = 0;
};

// The stock font of the engine's data pack: a sans-serif face, for scripts that bring no font.
constexpr const char* krDefaultFont = "fonts/default";
