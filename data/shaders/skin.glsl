// Vertex stage of the skinned stock shaders. Each vertex holds one weight for each of the eight
// places of the bone palette, places 0 to 3 in texture coordinate set 2 and 4 to 7 in set 3. The
// palette's matrices already hold the object's place in the world, so the model view is the
// camera's alone.
#version 120

uniform mat4 bones[8];

varying vec3 position;
varying vec3 normal;

void main()
{
    vec4 w0 = gl_MultiTexCoord2;
    vec4 w1 = gl_MultiTexCoord3;
    mat4 skin = bones[0] * w0.x + bones[1] * w0.y + bones[2] * w0.z + bones[3] * w0.w
              + bones[4] * w1.x + bones[5] * w1.y + bones[6] * w1.z + bones[7] * w1.w;
    vec4 eye = gl_ModelViewMatrix * (skin * gl_Vertex);
    position = eye.xyz;
    normal = gl_NormalMatrix * (mat3(skin) * gl_Normal);
    gl_TexCoord[0] = gl_MultiTexCoord0;
    gl_FogFragCoord = abs(position.z);
    gl_Position = gl_ProjectionMatrix * eye;
}
