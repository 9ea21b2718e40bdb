// Skinned specular materials with a specular map in unit 1.
$vertex = "skin";
$fragment = "lit_specular_map";
$attributes = POSITION | NORMAL | TEXCOORD0 | WEIGHTx8;
$textures = TEXTURE0 | TEXTURE1;
$parameters = BONEx8;
