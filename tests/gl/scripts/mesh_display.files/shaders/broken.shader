// A shader whose fragment stage does not compile: the material falls back to the default.
$vertex = "plain";
$fragment = "broken";
$attributes = POSITION;
$textures = TEXTURE0;
