// krVideo_OGL: the draw loop on OpenGL. Each 3D viewport's walk fills three fixed queues, which
// then run in a fixed order: opaque items grouped by shader, glows (drawn with an occlusion
// query), transparent items from far to near; then the 2D pass draws the glows that were seen.
// 2D viewports draw their items during the walk. The capability flags that the window finds
// live here, for the whole renderer to read. The video owns the texture, shader and font tables
// and turns meshes and owners' dynamic records into items.
#pragma once

#include <vector>

#include "core/krMatrix.h"
#include "render/krVideo.h"

class krFonts_OGL;
class krShader_OGL;
class krShaders_OGL;
class krTextures_OGL;
class krVideoItem_OGL;
class krWindow;

class krVideo_OGL : public krVideo {
public:
    // The queues are fixed: a scene never allocates. An item finds a full queue and is not drawn.
    // Mesh shaders of one scene, a few per visible object.
    static constexpr int32_t opaqueQueueSize = 8192;
    // Transparent pieces, each sorted by distance every frame.
    static constexpr int32_t alphaQueueSize = 2048;
    // Light flares, each with an occlusion query.
    static constexpr int32_t glowQueueSize = 256;

    explicit krVideo_OGL(krModule* owner);
    ~krVideo_OGL() override;
    const char* className() const override { return "krVideo_OGL"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    // A table deleted by a script is no longer used.
    void removeChild(krModule* child) override;
    bool init() override;
    bool update(float dt) override;
    void drawScene(float x, float y, float width, float height) override;
    void drawViewport() override;
    // Null without vertices, or while there is no context to hand the geometry to.
    krVideoItem* createMeshItem(krModule* module, krMesh* mesh, int32_t kind) override;
    // Items made before the window's context stands take their textures at their first draw.
    krVideoItem* createDynamicItem(krModule* module, krDynamicData* data, int32_t kind) override;
    krVideoItem* createTextItem(krModule* module, krTextData* data, int32_t kind) override;
    void setItemData(krVideoItem* item, krDynamicData* data) override;
    float textCharWidth(krVideoItem* item, int32_t character) override;
    float textWidth(krVideoItem* item) override;

    // The shader for a material: by its own shader name if it has one, else by the material
    // flags, from the engine's stock shaders. Null without a shader table.
    krShader_OGL* selectShader(int32_t flags, const std::string& name, bool skinned);
    // Null once a script has deleted the table; the shader table is made by the first init
    // with a context, and anew after a lost one.
    krTextures_OGL* getTextures() const { return textures; }
    krShaders_OGL* getShaders() const { return shaders; }
    // Null once a script has deleted it.
    krFonts_OGL* getFonts() const { return fonts; }
    // Counts the contexts the video has lost: objects made in an earlier one are gone with it.
    uint32_t getContextGeneration() const { return contextGeneration; }

    // Queue entry points for items during the walk; false when the queue is full.
    bool queueOpaque(krVideoItem_OGL* item);
    // The key orders the queue: the squared distance from the eye, drawn largest first.
    bool queueAlpha(krVideoItem_OGL* item, float depthKey);
    bool queueGlow(krVideoItem_OGL* item);
    int32_t getOpaqueCount() const { return opaqueCount; }
    int32_t getAlphaCount() const { return alphaCount; }
    int32_t getGlowCount() const { return glowCount; }

    void addPolygons(int32_t count) { polygonCounter += count; }
    void resetPolygonCounter() { polygonCounter = 0; }
    // The running count of this frame becomes the frame's count.
    void closePolygonCount() { polyCount = polygonCounter; }
    int32_t getPolyCount() const { return polyCount; }

    const krVector3& getEyeCopy() const { return eyeCopy; }
    // World to 2D overlay coordinates of the current viewport.
    const krMatrix& getScreenMatrix() const { return screenMatrix; }
    int32_t getFrameNumber() const { return frameNumber; }
    // Transparent triangles re-sort this frame rather than in their turn.
    bool getForceAlphaSort() const { return forceAlphaSort; }
    float getAnisotropy() const { return anisotropy; }
    float getMotionBlur() const { return motionBlur; }
    int32_t getMaxVertexWeights() const { return maxVertexWeights; }
    int32_t getOptimizeSkinGroups() const { return optimizeSkinGroups; }
    uint32_t getQuery() const { return query; }

    // Selects fixed-function drawing again after a shader program, through the shader table.
    void unbindShaders();
    // The window's context went away with everything made in it: nothing is drawn until a new
    // one stands, and what lived in the old one is made again at the next init.
    void contextLost();

    // Capabilities. The wished ones (glsl, cg, occlusionQuery, pointSprites, hardwareSkinning)
    // are set by scripts before the window's init, which tests them and clears what is missing;
    // the others the window sets. contextReady says a context stands to draw with.
    bool glsl = false;
    bool cg = false;
    bool occlusionQuery = false;
    bool pointSprites = false;
    bool vertexAttributes = false;
    bool vertexBuffers = false;
    bool pixelBuffers = false;
    bool hardwareSkinning = false;
    bool contextReady = false;

private:
    struct AlphaEntry {
        float key;
        krVideoItem_OGL* item;
    };
    // The walk's order rides along, so that items of one shader keep it: near things that the
    // walk met first still draw first, and frames do not flicker between equal orders. The shader
    // is read once, when the item enters: the sort then stays within this array.
    struct OpaqueEntry {
        const krShader_OGL* shader;
        int32_t order;
        krVideoItem_OGL* item;
    };

    krWindow* window() const;
    void drawScene3D();
    void draw2DPass();
    void setOverlayProjection(float width, float height);
    void setLights();
    void runOpaqueQueue();
    void runAlphaQueue();
    void filterGlows();
    void accumulate();
    float measurePixels(float width, float height);

    float timer = 0;
    krVector3 eyeCopy;
    krShaders_OGL* shaders = nullptr;
    krTextures_OGL* textures = nullptr;
    krFonts_OGL* fonts = nullptr;
    uint32_t contextGeneration = 0;
    krMatrix projection{true};
    krMatrix modelView{true};
    krMatrix screenMatrix{true};
    std::vector<krVideoItem_OGL*> glowQueue;
    std::vector<AlphaEntry> alphaQueue;
    std::vector<OpaqueEntry> opaqueQueue;
    int32_t glowCount = 0;
    int32_t alphaCount = 0;
    int32_t opaqueCount = 0;
    int32_t polyCount = 0;
    int32_t polygonCounter = 0;
    int32_t frameNumber = 0;
    bool forceAlphaSort = false;
    uint32_t query = 0;
    float anisotropy = 0;
    float nearPlane = 0.1f;
    float motionBlur = 0;
    bool firstFrame = true;
    int32_t maxVertexWeights = 4;
    int32_t optimizeSkinGroups = 0;
    // OpenGL's light count, read at init: lights beyond it are not shown.
    int32_t maxLights = 0;
    int32_t enabledLights = 0;
};

// The video and the context an OpenGL object was made in. Names belong to their context: one
// that went away (the window made anew, or gone) took its objects with it, and their names may
// stand for new objects since. So an object is deleted, or bound, only while its stamp is current.
class krContextStamp {
public:
    krContextStamp() = default;
    explicit krContextStamp(krVideo_OGL* video);
    // The video, while it lives and still draws in the same context; else null.
    krVideo_OGL* current() const;
    // The same for code that a live video calls, without the look-up.
    bool isCurrentIn(const krVideo_OGL* video) const {
        return video == madeBy && video->contextReady && video->getContextGeneration() == generation;
    }

private:
    // Compared, never followed: only the handle says whether the video still lives.
    const krVideo_OGL* madeBy = nullptr;
    int32_t videoHandle = 0;
    uint32_t generation = 0;
};
