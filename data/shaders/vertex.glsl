// Vertex stage of the lit stock shaders: lighting is worked out per pixel, in eye space, where
// OpenGL keeps the lights.
#version 120

varying vec3 position;
varying vec3 normal;

void main()
{
    position = vec3(gl_ModelViewMatrix * gl_Vertex);
    normal = gl_NormalMatrix * gl_Normal;
    gl_TexCoord[0] = gl_MultiTexCoord0;
    // The same depth as fixed-function drawing, so that both kinds of object meet cleanly.
    gl_FogFragCoord = abs(position.z);
    gl_Position = ftransform();
}
