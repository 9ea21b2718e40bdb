// krObject: the base of everything placed in the 3D world. It has a pose relative to its owner,
// bounds, and it loads its whole tree (meshes, sub-objects, spatial splits with further files)
// from one mesh file, with an optional companion script that hears the load as it happens.
// Geometry does not stay here: each mesh goes to addMesh, where the video turns drawn meshes
// into items and the physics classes (which derive from this) take what they collide with.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/krBox.h"
#include "core/krQuat.h"
#include "render/krMeshFile.h"
#include "render/krObjectContainer.h"

class krMeshReader;
class krScript;
struct krChunk;
struct krClassInfo;
struct krMaterial;
struct krMesh;
struct krStateEntry;

class krObject : public krObjectContainer {
public:
    explicit krObject(krModule* owner);
    ~krObject() override;
    const char* className() const override { return "krObject"; }
    // Its members and events, for the reference.
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    void deinit() override;
    bool update(float dt) override;
    // Keeps the object where it is in the world while it changes owner.
    void setOwner(krModule* newOwner) override;
    bool isInView() override;
    // The skeleton the object draws with: its own, or for a sub-object the one that bound it.
    krSkeleton* getSkeleton() override;

    bool collectObjects(krCollectResult& result, const krBox& box) override;
    krObject* findObject(const std::string& name) override;

    // Makes the object for a sub-object or a leaf, attached to owner; subclasses choose by type.
    virtual krObject* createChild(int32_t type, krModule* owner);
    // The load of this object's file has ended.
    virtual void onLoaded();
    // Makes the skeleton of loadSkeleton, owned by this; a character's has its animation states.
    virtual krSkeleton* createSkeleton();
    // Whether the skeleton plays a state's entry: the entry itself, another to play in its place,
    // or null to leave it out. A plain object plays everything.
    virtual const krStateEntry* filterStateEntry(const krStateEntry* entry) { return entry; }

    // The readers of a load, in file order; each consumes what it reads of chunk.
    virtual void readObjectTree(krMeshReader& reader, krChunk& chunk);
    virtual void readSplit(krMeshReader& reader, krChunk& chunk, krModule* owner);
    virtual void readLeaf(krMeshReader& reader, krChunk& chunk, krModule* owner);
    virtual void readObject(krMeshReader& reader, krChunk& chunk, const krMeshFile::ObjectHeader& header, bool top);
    virtual void readRootObject(krMeshReader& reader, krChunk& chunk, bool top);
    virtual void readMesh(krMeshReader& reader, krChunk& chunk);
    virtual void readWeights(krMeshReader& reader, krChunk& chunk, krMesh& mesh);
    virtual void readVertices(krMeshReader& reader, krChunk& chunk, krMesh& mesh);
    virtual void readFaces(krMeshReader& reader, krChunk& chunk, krMesh& mesh);
    virtual void readMaterials(krMeshReader& reader, krChunk& chunk, krMesh& mesh);
    virtual void readMaterial(krMeshReader& reader, krChunk& chunk, krMaterial& material);
    // Takes one mesh of a load; the mesh and its geometry are gone when this returns.
    virtual void addMesh(krMesh& mesh);

    // scale 0 means the file's own size.
    virtual void loadFromFile(const std::string& name, float scale);
    virtual void genMeshBox(const krVector3& size);
    virtual void genMeshEllipsoid(const krVector3& size, int32_t segments);
    virtual void loadScript(const std::string& name);
    // Replaces the object's skeleton by one loaded from a skeleton file; null when none is made.
    virtual krSkeleton* loadSkeleton(const std::string& name);
    virtual void setPosition(const krVector3& p);
    virtual void setOrientation(const krQuat& q);
    // Turns the object by q about pivot, a point in its own space, from where the load left it.
    virtual void rotateAboutPivot(const krQuat& q, const krVector3& pivot);
    virtual void setSkeleton(krSkeleton* s);
    virtual krQuat getWorldRotation() { return worldRotation; }

    // The same as loadFromFile, from bytes already in memory; name gives the folder and the
    // companion script as a file name would.
    void loadFromMemory(const std::string& name, const void* bytes, uint32_t count);
    // Grows localBox, box and radius to hold a child object, as a sub-object's load does.
    void containObject(const krObject& child);
    void restoreTransform();
    // Who hears this object's load events: itself, or for a sub-object or leaf the object whose
    // load made it, while that one lives.
    krObject* getEventTarget();
    void setEventTarget(krObject* target);
    const std::vector<uint8_t>& getBonesUsed() const { return bonesUsed; }
    krScript* getScript() const { return script; }

    krQuat rotation = krQuat::identity;
    // Folder of the file it was loaded from, with the trailing "/".
    std::string path;
    std::string name;
    krBox localBox;
    krQuat worldRotation = krQuat::identity;
    bool sortAlpha = false;
    // Set when a skeleton drives the transform: update leaves the matrix alone.
    bool boneDriven = false;
    // One above the largest bone index named by this object's weights.
    int32_t boneLimit = 0;
    krQuat initialRotation = krQuat::identity;
    krVector3 initialPosition;
    float minDrawDistance = 0;
    float maxDrawDistance = defaultMaxDrawDistance;

    static constexpr float defaultMaxDrawDistance = 1e16f;

protected:
    // matrix = own pose x owner's matrix.
    void updateMatrix();
    void readSubObject(krMeshReader& reader, krChunk& chunk);
    void readFile(krMeshReader& reader, float scale);
    // Deletes the companion script, or hands it on for later deletion while it runs.
    void dropScript();

    krScript* script = nullptr;
    // The object value handed to the companion script.
    krVariant* self = nullptr;
    // By handle: sub-objects hold their top object's skeleton, which may go before they do.
    int32_t skeletonHandle = 0;
    // 1 for every bone a weight names, boneLimit long.
    std::vector<uint8_t> bonesUsed;
    int32_t eventTargetHandle = 0;
    // Set by deinit: a load in progress stops reading into a deleted object.
    bool closed = false;

private:
    void nameShape(const char* kind, const krVector3& size);
    void boundShape(const krVector3& size);
};
