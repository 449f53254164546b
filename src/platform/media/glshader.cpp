// SPDX-License-Identifier: GPL-3.0-or-later
#include "glshader.h"

#include "colourmap.h"

namespace glshader {

namespace {

// Places are reckoned here: a small graphics processor knows them too coarsely in the other shader.
constexpr const char *Vertex = R"(
attribute vec2 corner;
attribute vec2 place;
uniform vec2 chromaScale;
uniform vec2 chromaOffset;
varying vec2 at;
varying vec2 chromaAt;
void main()
{
    at = place;
    chromaAt = place * chromaScale + chromaOffset;
    gl_Position = vec4(corner, 0.0, 1.0);
}
)";

constexpr const char *Fragment = R"(
uniform sampler2D luma;
uniform sampler2D chroma;
uniform sampler2D chromaRed;
#ifdef COLOUR_TABLE
uniform sampler3D table;
#endif
uniform float codes;
uniform mat4 colours;
uniform float opacity;
varying vec2 at;
varying vec2 chromaAt;
void main()
{
#ifdef SHARED_CHROMA
    vec4 both = texture2D(chroma, chromaAt);
    vec2 differences = vec2(both.r, both.SECOND);
#else
    vec2 differences = vec2(texture2D(chroma, chromaAt).r, texture2D(chromaRed, chromaAt).r);
#endif
    vec3 code = vec3(texture2D(luma, at).r, differences) * codes;
#ifdef COLOUR_TABLE
    vec3 node = vec3(code.x / LUMA_STEP, code.z / CHROMA_STEP, code.y / CHROMA_STEP);
    vec3 colour = texture3D(table, (node + 0.5) / vec3(LUMA_NODES, CHROMA_NODES, CHROMA_NODES)).rgb;
#else
    vec3 colour = (colours * vec4(code, 1.0)).rgb;
#endif
    gl_FragColor = vec4(clamp(colour, 0.0, 1.0), 1.0) * opacity;
}
)";

QByteArray head(int features, bool fragment)
{
    QByteArray text;
    if ((features & NewWords) != 0) {
        text += "#version 300 es\nprecision highp float;\nprecision highp sampler3D;\n"
                "#define texture2D texture\n#define texture3D texture\n#define attribute in\n";
        text += fragment ? "#define varying in\nout vec4 result;\n#define gl_FragColor result\n"
                         : "#define varying out\n";
    } else {
        text += "#ifdef GL_ES\n#ifdef GL_FRAGMENT_PRECISION_HIGH\nprecision highp float;\n#else\n"
                "precision mediump float;\n#endif\n#endif\n";
    }
    if ((features & SharedChroma) != 0)
        text += "#define SHARED_CHROMA\n";
    if ((features & ColourTable) != 0)
        text += "#define COLOUR_TABLE\n";
    text += (features & OldTextures) != 0 ? "#define SECOND a\n" : "#define SECOND g\n";
    const auto number = [&text](const char *name, int value) {
        text += QByteArray("#define ") + name + ' ' + QByteArray::number(value) + ".0\n";
    };
    number("LUMA_STEP", 1 << ColourMap::LumaBits);
    number("CHROMA_STEP", 1 << ColourMap::ChromaBits);
    number("LUMA_NODES", ColourMap::LumaNodes);
    number("CHROMA_NODES", ColourMap::ChromaNodes);
    return text;
}

} // namespace

QByteArray vertexSource(int features)
{
    return head(features, false) + Vertex;
}

QByteArray fragmentSource(int features)
{
    return head(features, true) + Fragment;
}

} // namespace glshader
