// Vertex stage of the normal-mapped stock shaders: as vertex.glsl, with the tangent (the
// direction in which u grows) that mesh items pass as texture coordinate set 1.
#version 120

varying vec3 position;
varying vec3 normal;
varying vec3 tangent;

void main()
{
    position = vec3(gl_ModelViewMatrix * gl_Vertex);
    normal = gl_NormalMatrix * gl_Normal;
    tangent = gl_NormalMatrix * gl_MultiTexCoord1.xyz;
    gl_TexCoord[0] = gl_MultiTexCoord0;
    gl_FogFragCoord = abs(position.z);
    gl_Position = ftransform();
}
