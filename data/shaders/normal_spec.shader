// Normal-mapped specular materials: the normal-mapped program takes its highlight from the
// material, which is black on the others.
include("shaders/normal.shader");
