// Points drawn by a program (particles where the video has point sprites and GLSL): each point's
// size factor sizes it, and its colour tints the texture.
$vertex = "point";
$fragment = "sprite";
$attributes = POSITION | POINTSIZE;
$textures = TEXTURE0;
$parameters = BONEx0;
