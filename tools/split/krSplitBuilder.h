// The split-tree builder: placed mesh files become the leaves of a tree of boxes, split along
// the longest side until each split holds only a few leaves, so that culling and box queries
// drop whole regions of a level at once.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/krQuat.h"
#include "core/krVector3.h"

struct krPlacement {
    std::string file;  // relative to the list's folder
    krVector3 position;
    krQuat rotation = krQuat::identity;
    std::string name;  // the file's stem unless the list names it
    int32_t type = 0;  // handed to the loading object's createChild
    int line = 0;
};

// Lines of "FILE X Y Z", optionally followed by "rotate DEGREES AX AY AZ", "name NAME" and
// "type N"; "#" starts a comment. False with the line's number and problem in error.
bool krParsePlacements(const std::string& text, std::vector<krPlacement>& out, std::string& error);

struct krSplitOptions {
    // Leaves a split may hold before it is split again.
    size_t leavesPerSplit = 8;
};

// The split file, written to outputDir, for placements listed in listDir. Each placed file is
// read with the engine's loader for its bounds.
bool krBuildSplitTree(const std::vector<krPlacement>& placements, const std::string& listDir,
                      const std::string& outputDir, const krSplitOptions& options, std::string& file,
                      std::string& error);
