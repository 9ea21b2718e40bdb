// Vertex stage of points: the size factor comes as the first texture coordinate and scales the
// size the item sets, and points shrink with distance as fixed-function ones do.
#version 120

void main()
{
    vec4 eye = gl_ModelViewMatrix * gl_Vertex;
    float d = length(eye.xyz);
    float attenuation = gl_Point.distanceConstantAttenuation + gl_Point.distanceLinearAttenuation * d
                      + gl_Point.distanceQuadraticAttenuation * d * d;
    float size = gl_Point.size * gl_MultiTexCoord0.x * inversesqrt(max(attenuation, 1e-6));
    gl_PointSize = clamp(size, gl_Point.sizeMin, gl_Point.sizeMax);
    gl_FrontColor = gl_Color;
    gl_FogFragCoord = abs(eye.z);
    gl_Position = ftransform();
}
