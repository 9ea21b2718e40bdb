// Generated meshes: a box and an ellipsoid around the origin, with the one grey normal-mapped
// material that placeholder geometry in scenes is drawn with.
#pragma once

#include "core/krVector3.h"
#include "render/krMesh.h"

// Ellipsoids with fewer segments have no ring between the poles and so no surface.
constexpr int32_t krMinEllipsoidSegments = 4;
// Half a million vertices, far beyond any use of a generated shape; keeps a mistyped count from
// exhausting memory.
constexpr int32_t krMaxEllipsoidSegments = 1024;

// size: the full extent on each axis. Fills mesh with geometry it owns, drawn, one material.
void krMakeBoxMesh(krMesh& mesh, const krVector3& size);
// segments must lie within the limits above.
void krMakeEllipsoidMesh(krMesh& mesh, const krVector3& size, int32_t segments);
