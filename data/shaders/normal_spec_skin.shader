// Skinned normal-mapped specular materials: the highlight comes from the material.
include("shaders/normal_skin.shader");
