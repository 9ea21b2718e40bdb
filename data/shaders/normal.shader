// Normal-mapped materials: the normal map in unit 1, tangents from the mesh.
$vertex = "vertex_tangent";
$fragment = "normal_map";
$attributes = POSITION | NORMAL | TEXCOORD0 | TANGENT;
$textures = TEXTURE0 | TEXTURE1;
$parameters = BONEx0;
