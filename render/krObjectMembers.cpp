// The script interface of objects. Methods act only with their exact argument counts; any other
// count falls through to the base, and so ends as an event of that name.
#include "render/krObject.h"

#include "render/krMeshShapes.h"
#include "render/krSkeleton.h"
#include "script/krClassInfo.h"
#include "script/krBlock.h"
#include "script/krVArray.h"
#include "script/krVBound.h"
#include "script/krVObject.h"

namespace {

const krMemberInfo objectMembers[] = {
    {"loadFromFile", krCall, "(file, scale?)", "loads the object's tree from a mesh file; scale 0 keeps the file's size"},
    {"loadSkeleton", krCall, "(file)", "replaces the skeleton by one from a skeleton file and gives it"},
    {"setPosition", krCall, "(x, y, z)", "position relative to the owner"},
    {"setOrientation", krCall, "(angle, x, y, z)", "turns to angle radians about a non-zero axis"},
    {"genMeshBox", krCall, "(width, height, depth)", "a box mesh around the origin"},
    {"genMeshEllipsoid", krCall, "(width, height, depth, segments)", "an ellipsoid mesh of 4 to 1024 segments"},
    {"getObject", krCall, "(name)", "the first object of that name in the subtree, or null"},
    {"containObject", krCall, "(object)", "grows the bounds to hold a child object"},
    {"restoreTransform", krCall, "()", "back to the pose the load left"},
    {"objects", krRead, "array", "the child objects"},
    {"x", krRead | krWrite, "float", "position relative to the owner"},
    {"y", krRead | krWrite, "float", "position relative to the owner"},
    {"z", krRead | krWrite, "float", "position relative to the owner"},
    {"skeleton", krRead, "object", "the skeleton the object draws with, or null"},
    {"script", krRead, "script", "the companion script of the loaded file"},
    {"sortAlpha", krRead | krWrite, "bool", "draw transparent parts sorted far to near"},
    {"name", krRead | krWrite, "string", "found by getObject"},
    {"radius", krRead | krWrite, "float", "bounding sphere, for culling and collision"},
    {"minDrawDistance", krRead | krWrite, "float", "nearer than this the object is not drawn"},
    {"maxDrawDistance", krRead | krWrite, "float", "further than this the object is not drawn"},
};

const krEventInfo objectEvents[] = {
    {"loaded", "()", "the load of the object's file has ended"},
    {"loading", "(fraction)", "progress of a load, on the object that started it"},
    {"subObj_", "()", "completed by a sub-object's name: may return an object to use in its place"},
    {"loaded_", "(object)", "completed by a sub-object's name: that sub-object is loaded"},
    {"material_", "(shader, texture, surface)", "completed by a material's name: may change how it is drawn"},
};

}  // namespace

const krClassInfo krObject::info = {"krObject", "krObjectContainer", "new_object", objectMembers, objectEvents,
                                    "a thing in the 3D world: a mesh file's tree, or a generated shape"};

namespace {

krVector3 vectorOf(const krArgs& args, size_t first) {
    return {args[first]->toFloat(), args[first + 1]->toFloat(), args[first + 2]->toFloat()};
}

}  // namespace

krVariant* krObject::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    const size_t n = args.size();
    if (member == "loadFromFile" && (n == 1 || n == 2)) {
        loadFromFile(args[0]->toString(), n == 2 ? args[1]->toFloat() : 0);
        return nullptr;
    }
    if (member == "loadSkeleton" && n == 1) return new krVObject(loadSkeleton(args[0]->toString()));
    if (member == "setPosition" && n == 3) {
        setPosition(vectorOf(args, 0));
        return nullptr;
    }
    if (member == "setOrientation" && n == 4) {
        const krVector3 axis = vectorOf(args, 1);
        if (isZero(axis)) return reportError(caller, "setOrientation needs an axis that is not zero");
        setOrientation(krQuat::fromAxisAngle(args[0]->toFloat(), axis));
        return nullptr;
    }
    if (member == "genMeshEllipsoid" && n == 4) {
        const int32_t segments = args[3]->toInt();
        if (segments < krMinEllipsoidSegments || segments > krMaxEllipsoidSegments)
            return reportError(caller, "genMeshEllipsoid needs " + std::to_string(krMinEllipsoidSegments) + " to " +
                                           std::to_string(krMaxEllipsoidSegments) + " segments, not " +
                                           std::to_string(segments));
        genMeshEllipsoid(vectorOf(args, 0), segments);
        return nullptr;
    }
    if (member == "genMeshBox" && n == 3) {
        genMeshBox(vectorOf(args, 0));
        return nullptr;
    }
    if (member == "getObject" && n == 1) return new krVObject(findObject(args[0]->toString()));
    if (member == "containObject" && n == 1) {
        auto* child = dynamic_cast<krObject*>(krScriptObject::fromHandle(args[0]->toInt()));
        if (!child) return reportError(caller, "containObject needs an object");
        containObject(*child);
        return nullptr;
    }
    if (member == "restoreTransform" && n == 0) {
        restoreTransform();
        return nullptr;
    }
    if (member == "objects") {
        auto* list = new krVArray();
        for (krModule* child : children)
            if (auto* object = dynamic_cast<krObject*>(child)) list->append(new krVObject(object));
        return list;
    }
    if (member == "x") return new krVFloatPtr(&position.x, this);
    if (member == "y") return new krVFloatPtr(&position.y, this);
    if (member == "z") return new krVFloatPtr(&position.z, this);
    if (member == "skeleton") return new krVObject(getSkeleton());
    if (member == "script") return new krVScript(script);
    if (member == "sortAlpha") return new krVBool(sortAlpha);
    if (member == "name") return new krVStringPtr(&name, this);
    if (member == "radius") return new krVFloatPtr(&radius, this);
    if (member == "minDrawDistance") return new krVFloatPtr(&minDrawDistance, this);
    if (member == "maxDrawDistance") return new krVFloatPtr(&maxDrawDistance, this);
    return krObjectContainer::getMember(member, caller, args);
}

void krObject::setMember(const std::string& member, krVariant* value) {
    if (member == "x") position.x = value->toFloat();
    else if (member == "y") position.y = value->toFloat();
    else if (member == "z") position.z = value->toFloat();
    else if (member == "sortAlpha") sortAlpha = value->toBool();
    else if (member == "name") name = value->toString();
    else if (member == "radius") radius = value->toFloat();
    else if (member == "minDrawDistance") minDrawDistance = value->toFloat();
    else if (member == "maxDrawDistance") maxDrawDistance = value->toFloat();
    else krObjectContainer::setMember(member, value);
}
