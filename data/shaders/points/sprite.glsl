// Fragment stage of points: the texture across the sprite, tinted by the point's colour, fogged as
// the stock shaders are.
#version 120

uniform sampler2D texture0;

void main()
{
    vec4 color = texture2D(texture0, gl_PointCoord) * gl_Color;
    // The video keeps the density at 0 while fog is off.
    float fog = gl_Fog.density > 0.0 ? clamp((gl_Fog.end - gl_FogFragCoord) * gl_Fog.scale, 0.0, 1.0) : 1.0;
    gl_FragColor = vec4(mix(gl_Fog.color.rgb, color.rgb, fog), color.a);
}
