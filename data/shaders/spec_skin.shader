// Skinned specular materials: the skinned program takes its highlight from the material, which
// is black on the others.
include("shaders/skin.shader");
