// Skinned normal-mapped materials with a specular map in unit 2.
$vertex = "skin_tangent";
$fragment = "normal_specular_map";
$attributes = POSITION | NORMAL | TEXCOORD0 | TANGENT | WEIGHTx8;
$textures = TEXTURE0 | TEXTURE1 | TEXTURE2;
$parameters = BONEx8;
