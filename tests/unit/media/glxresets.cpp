// SPDX-License-Identifier: GPL-3.0-or-later
#include "glxresets.h"

#include <GL/glx.h>
#include <GL/glxext.h>

#include <climits>
#include <cstring>
#include <dlfcn.h>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr unsigned GuiltyReset = 0x8253;
constexpr int RobustAccess = 4;

struct Made
{
    int before = 0; // how many resets there were
    bool toldOfResets = false;
};

std::map<GLXContext, Made> contexts;
int resets = 0;
int mismatched = 0;
int allowed = INT_MAX;

template <typename Function> Function library(const char *name)
{
    static void *gl = dlopen("libGL.so.1", RTLD_LAZY);
    return reinterpret_cast<Function>(dlsym(gl, name));
}

using Resolver = __GLXextFuncPtr (*)(const GLubyte *);

__GLXextFuncPtr resolved(const char *name)
{
    return library<Resolver>("glXGetProcAddress")(reinterpret_cast<const GLubyte *>(name));
}

// What the library here does not know is left out.
std::vector<int> understood(const int *attributes, bool *toldOfResets)
{
    std::vector<int> result;
    for (; attributes != nullptr && *attributes != None; attributes += 2) {
        if (attributes[0] == GLX_CONTEXT_RESET_NOTIFICATION_STRATEGY_ARB) {
            *toldOfResets = attributes[1] == GLX_LOSE_CONTEXT_ON_RESET_ARB;
            continue;
        }
        const bool flags = attributes[0] == GLX_CONTEXT_FLAGS_ARB;
        result.insert(result.end(), {attributes[0], flags ? attributes[1] & ~RobustAccess : attributes[1]});
    }
    result.push_back(None);
    return result;
}

GLXContext remembered(GLXContext context, bool toldOfResets)
{
    if (context != nullptr)
        contexts[context] = {resets, toldOfResets};
    return context;
}

bool isAllowed()
{
    return allowed > 0 && allowed-- > 0;
}

GLXContext create(Display *display, GLXFBConfig config, GLXContext shared, Bool direct, const int *attributes)
{
    bool toldOfResets = false;
    const std::vector<int> known = understood(attributes, &toldOfResets);
    if (shared != nullptr && contexts[shared].toldOfResets != toldOfResets) {
        ++mismatched;
        return nullptr;
    }
    if (!isAllowed())
        return nullptr;
    const auto real
        = reinterpret_cast<PFNGLXCREATECONTEXTATTRIBSARBPROC>(resolved("glXCreateContextAttribsARB"));
    return remembered(real(display, config, shared, direct, known.data()), toldOfResets);
}

unsigned resetStatus()
{
    const auto found = contexts.find(glXGetCurrentContext());
    const bool lost = found != contexts.end() && found->second.toldOfResets && found->second.before != resets;
    return lost ? GuiltyReset : GL_NO_ERROR;
}

} // namespace

extern "C" {

const char *glXQueryExtensionsString(Display *display, int screen)
{
    static std::string extensions;
    extensions = library<const char *(*)(Display *, int)>("glXQueryExtensionsString")(display, screen);
    extensions += " GLX_ARB_create_context_robustness";
    return extensions.c_str();
}

__GLXextFuncPtr glXGetProcAddress(const GLubyte *function)
{
    const auto *name = reinterpret_cast<const char *>(function);
    if (std::strcmp(name, "glXCreateContextAttribsARB") == 0)
        return reinterpret_cast<__GLXextFuncPtr>(&create);
    if (std::strcmp(name, "glGetGraphicsResetStatusARB") == 0)
        return reinterpret_cast<__GLXextFuncPtr>(&resetStatus);
    return resolved(name);
}

GLXContext glXCreateNewContext(Display *display, GLXFBConfig config, int type, GLXContext shared, Bool direct)
{
    using Create = GLXContext (*)(Display *, GLXFBConfig, int, GLXContext, Bool);
    return !isAllowed()
        ? nullptr
        : remembered(library<Create>("glXCreateNewContext")(display, config, type, shared, direct), false);
}

} // extern "C"

namespace glxresets {

void reset()
{
    ++resets;
}

void takeAway()
{
    ++resets;
    allowed = 0;
}

void allow(int more)
{
    allowed = more;
}

void bringBack()
{
    allowed = INT_MAX;
}

int mismatches()
{
    return mismatched;
}

} // namespace glxresets
