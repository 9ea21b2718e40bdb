// Skinned meshes: a palette of eight bones, a weight for each place.
$vertex = "skin";
$fragment = "lit";
$attributes = POSITION | NORMAL | TEXCOORD0 | WEIGHTx8;
$textures = TEXTURE0;
$parameters = BONEx8;
