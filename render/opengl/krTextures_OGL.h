// krTextures_OGL: the video's table of textures loaded from DDS files. A texture is shared by its
// file name and counted: each load adds one, each release takes one, and the last release deletes
// it. A file that cannot be used gives the fallback "textures/default.dds", which is not counted
// for the caller, so a missing texture shows as the fallback and never as garbage.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "core/krModule.h"

class krTextures_OGL : public krModule {
public:
    // Drawn where a texture is missing or broken.
    static constexpr const char* defaultName = "textures/default.dds";

    explicit krTextures_OGL(krModule* owner);
    ~krTextures_OGL() override;
    const char* className() const override { return "krTextures_OGL"; }
    static const krClassInfo info;

    // Loads the fallback once a context stands, then the children.
    bool init() override;
    // The table stays with its video: the textures live in the video's context.
    void setOwner(krModule*) override;

    // The OpenGL name of the texture; 0 for an empty name. A failed load is not kept: the next
    // load of that name tries the file again.
    uint32_t load(const std::string& name);
    // Names not in the table are ignored.
    void release(const std::string& name);
    // 0 when the fallback itself could not be loaded: failing textures then draw untextured.
    uint32_t getDefaultTexture() const { return defaultTexture; }
    // A white texel: what a program samples in the diffuse unit of an untextured material, so
    // that the material shows its own colour there as it does in fixed-function drawing. Made on
    // first request in the current context.
    uint32_t getBlankTexture();
    // Loads of a name not yet released; 0 when it is not in the table.
    int32_t useCount(const std::string& name) const;

    // The context went away with every texture in it: the names are forgotten, not deleted.
    void contextLost();

private:
    struct Entry {
        uint32_t texture;
        int32_t count;
    };
    bool upload(const std::string& name, uint32_t texture);

    std::map<std::string, Entry> entries;
    uint32_t defaultTexture = 0;
    uint32_t blankTexture = 0;
};
