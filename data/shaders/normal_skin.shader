// Skinned normal-mapped materials.
$vertex = "skin_tangent";
$fragment = "normal_map";
$attributes = POSITION | NORMAL | TEXCOORD0 | TANGENT | WEIGHTx8;
$textures = TEXTURE0 | TEXTURE1;
$parameters = BONEx8;
