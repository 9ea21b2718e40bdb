// Normal-mapped materials with a specular map in unit 2.
$vertex = "vertex_tangent";
$fragment = "normal_specular_map";
$attributes = POSITION | NORMAL | TEXCOORD0 | TANGENT;
$textures = TEXTURE0 | TEXTURE1 | TEXTURE2;
$parameters = BONEx0;
