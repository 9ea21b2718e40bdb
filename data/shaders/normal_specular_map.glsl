// Fragment stage: normal_map.glsl with the highlight scaled by the specular map of unit 2.
#version 120

uniform sampler2D texture0;
uniform sampler2D texture1;
uniform sampler2D texture2;

varying vec3 position;
varying vec3 normal;
varying vec3 tangent;

void main()
{
    vec3 n = normalize(normal);
    vec3 t = tangent - n * dot(n, tangent);
    if (dot(t, t) > 1e-8) {
        t = normalize(t);
        vec3 bump = texture2D(texture1, gl_TexCoord[0].st).xyz * 2.0 - 1.0;
        n = normalize(t * bump.x + cross(n, t) * bump.y + n * bump.z);
    }
    vec4 light = gl_LightSource[0].position;
    vec3 l = normalize(light.xyz - position * light.w);
    float diffuse = max(dot(n, l), 0.0);
    vec3 h = normalize(l - normalize(position));
    float specular = diffuse > 0.0 ? pow(max(dot(n, h), 0.0), max(gl_FrontMaterial.shininess, 1.0)) : 0.0;

    vec4 texel = texture2D(texture0, gl_TexCoord[0].st);
    vec3 shine = texture2D(texture2, gl_TexCoord[0].st).rgb;
    vec4 lit = gl_FrontLightModelProduct.sceneColor + gl_FrontLightProduct[0].ambient
             + gl_FrontLightProduct[0].diffuse * diffuse;
    vec3 color = lit.rgb * texel.rgb + gl_FrontLightProduct[0].specular.rgb * shine * specular;
    // Linear fog as fixed-function drawing has it; the video keeps the density at 0 while fog is off.
    float fog = gl_Fog.density > 0.0 ? clamp((gl_Fog.end - gl_FogFragCoord) * gl_Fog.scale, 0.0, 1.0) : 1.0;
    gl_FragColor = vec4(mix(gl_Fog.color.rgb, color, fog), gl_FrontMaterial.diffuse.a * texel.a);
}
