// Specular materials with a specular map in unit 1.
$vertex = "vertex";
$fragment = "lit_specular_map";
$attributes = POSITION | NORMAL | TEXCOORD0;
$textures = TEXTURE0 | TEXTURE1;
$parameters = BONEx0;
