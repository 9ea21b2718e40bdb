// Specular materials: per-pixel light with a highlight.
$vertex = "vertex";
$fragment = "lit";
$attributes = POSITION | NORMAL | TEXCOORD0;
$textures = TEXTURE0;
$parameters = BONEx0;
