// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

// The shaders that draw a decoder's picture, as texts.
namespace glshader {

enum Feature {
    SharedChroma = 1, // both colour differences in one texture
    ColourTable = 2, // colours by the table instead of the matrix
    OldTextures = 4, // two channels are called luminance and alpha
    NewWords = 8, // the language of OpenGL ES 3
};

constexpr int CornerAttribute = 0;
constexpr int PlaceAttribute = 1;
constexpr const char *TextureNames[] = {"luma", "chroma", "chromaRed", "table"};

[[nodiscard]] QByteArray vertexSource(int features);
[[nodiscard]] QByteArray fragmentSource(int features);

} // namespace glshader
