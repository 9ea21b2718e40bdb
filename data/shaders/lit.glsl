// Fragment stage: the diffuse texture lit per pixel by the scene's first light, with the material
// that the mesh's display list sets. Materials without a specular colour have a black one, so
// one program serves both.
#version 120

uniform sampler2D texture0;

varying vec3 position;
varying vec3 normal;

void main()
{
    vec3 n = normalize(normal);
    // A point light has w 1; a direction (the default light) w 0.
    vec4 light = gl_LightSource[0].position;
    vec3 l = normalize(light.xyz - position * light.w);
    float diffuse = max(dot(n, l), 0.0);
    vec3 h = normalize(l - normalize(position));
    float specular = diffuse > 0.0 ? pow(max(dot(n, h), 0.0), max(gl_FrontMaterial.shininess, 1.0)) : 0.0;

    vec4 texel = texture2D(texture0, gl_TexCoord[0].st);
    vec4 lit = gl_FrontLightModelProduct.sceneColor + gl_FrontLightProduct[0].ambient
             + gl_FrontLightProduct[0].diffuse * diffuse;
    vec3 color = lit.rgb * texel.rgb + gl_FrontLightProduct[0].specular.rgb * specular;
    // Linear fog as fixed-function drawing has it; the video keeps the density at 0 while fog is off.
    float fog = gl_Fog.density > 0.0 ? clamp((gl_Fog.end - gl_FogFragCoord) * gl_Fog.scale, 0.0, 1.0) : 1.0;
    gl_FragColor = vec4(mix(gl_Fog.color.rgb, color, fog), gl_FrontMaterial.diffuse.a * texel.a);
}
