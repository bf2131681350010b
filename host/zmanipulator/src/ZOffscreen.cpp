// SPDX-License-Identifier: MIT
// The off-screen context and its pictures.
#include "zmanipulator/ZOffscreen.h"

#include "Gl.h"
#include "zmanipulator/ZViewer.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {
struct Offscreen
{
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLSurface surface = EGL_NO_SURFACE; ///< none where the display can do without
    EGLContext context = EGL_NO_CONTEXT;
};

Offscreen& TheOffscreen()
{
    static Offscreen offscreen;
    return offscreen;
}

bool Refuse(std::string* why, const std::string& sentence)
{
    if (why != nullptr)
        *why = sentence;
    return false;
}

std::string EglReason(const char* call)
{
    char text[96];
    std::snprintf(text, sizeof text, "%s failed with EGL error 0x%04x", call, static_cast<unsigned>(eglGetError()));
    return text;
}

bool HasExtension(const char* list, const char* name)
{
    if (list == nullptr)
        return false;
    const size_t length = std::strlen(name);
    for (const char* at = std::strstr(list, name); at != nullptr; at = std::strstr(at + length, name))
        if ((at == list || at[-1] == ' ') && (at[length] == ' ' || at[length] == '\0'))
            return true;
    return false;
}

EGLDisplay SurfacelessDisplay()
{
    const char* const extensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    if (!HasExtension(extensions, "EGL_MESA_platform_surfaceless") ||
        !HasExtension(extensions, "EGL_EXT_platform_base"))
        return EGL_NO_DISPLAY;
    const auto getDisplay =
        reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
    return getDisplay != nullptr ? getDisplay(EGL_PLATFORM_SURFACELESS_MESA, nullptr, nullptr) : EGL_NO_DISPLAY;
}

/// Everything that one display gives; what was made is undone when a later step fails.
bool MakeOn(EGLDisplay display, Offscreen& made, std::string& why)
{
    if (display == EGL_NO_DISPLAY)
        return Refuse(&why, "there is no such EGL display");
    if (eglInitialize(display, nullptr, nullptr) != EGL_TRUE)
        return Refuse(&why, EglReason("eglInitialize"));
    const bool surfaceless = HasExtension(eglQueryString(display, EGL_EXTENSIONS), "EGL_KHR_surfaceless_context");
    const EGLint wanted[] = {EGL_SURFACE_TYPE, surfaceless ? EGL_DONT_CARE : EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE,
                             EGL_OPENGL_BIT, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    made.display = display;
    if (eglBindAPI(EGL_OPENGL_API) != EGL_TRUE)
        why = EglReason("eglBindAPI for OpenGL");
    else if (eglChooseConfig(display, wanted, &config, 1, &count) != EGL_TRUE || count == 0)
        why = "EGL has no configuration for OpenGL";
    else if (made.context = eglCreateContext(display, config, EGL_NO_CONTEXT, nullptr); made.context == EGL_NO_CONTEXT)
        why = EglReason("eglCreateContext");
    else if (!surfaceless) {
        const EGLint size[] = {EGL_WIDTH, 1, EGL_HEIGHT, 1, EGL_NONE};
        made.surface = eglCreatePbufferSurface(display, config, size);
        if (made.surface == EGL_NO_SURFACE)
            why = EglReason("eglCreatePbufferSurface");
    }
    if (why.empty())
        return true;
    if (made.context != EGL_NO_CONTEXT)
        eglDestroyContext(display, made.context);
    eglTerminate(display);
    made = Offscreen();
    return false;
}

bool Make(Offscreen& offscreen, std::string* why)
{
    std::string surfacelessWhy, defaultWhy;
    if (MakeOn(SurfacelessDisplay(), offscreen, surfacelessWhy) ||
        MakeOn(eglGetDisplay(EGL_DEFAULT_DISPLAY), offscreen, defaultWhy))
        return true;
    return Refuse(why, "No off-screen OpenGL: without a surface, " + surfacelessWhy + "; on the default display, " +
                           defaultWhy + ".");
}

/// What EGL had current before, to be current again. (A context of another kind is its window system's to set again.)
class CurrentGuard
{
public:
    ~CurrentGuard()
    {
        if (m_context != EGL_NO_CONTEXT)
            eglMakeCurrent(m_display, m_draw, m_read, m_context);
    }

private:
    EGLDisplay m_display = eglGetCurrentDisplay();
    EGLSurface m_draw = eglGetCurrentSurface(EGL_DRAW), m_read = eglGetCurrentSurface(EGL_READ);
    EGLContext m_context = eglGetCurrentContext();
};

/// A framebuffer of its own size, bound while it lives; what was bound before is bound again.
class Framebuffer
{
public:
    Framebuffer(int width, int height)
    {
        glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &m_drawBefore);
        glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &m_readBefore);
        glGetIntegerv(GL_RENDERBUFFER_BINDING, &m_bufferBefore);
        glGenFramebuffers(1, &m_framebuffer);
        glGenRenderbuffers(2, m_buffers);
        glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
        Attach(0, GL_RGBA8, GL_COLOR_ATTACHMENT0, width, height);
        Attach(1, GL_DEPTH_COMPONENT24, GL_DEPTH_ATTACHMENT, width, height);
    }
    ~Framebuffer()
    {
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(m_drawBefore));
        glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(m_readBefore));
        glBindRenderbuffer(GL_RENDERBUFFER, static_cast<GLuint>(m_bufferBefore));
        glDeleteFramebuffers(1, &m_framebuffer);
        glDeleteRenderbuffers(2, m_buffers);
    }
    Framebuffer(const Framebuffer&) = delete;
    Framebuffer& operator=(const Framebuffer&) = delete;

    bool IsComplete() const { return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE; }

private:
    void Attach(int buffer, GLenum format, GLenum attachment, int width, int height)
    {
        glBindRenderbuffer(GL_RENDERBUFFER, m_buffers[buffer]);
        glRenderbufferStorage(GL_RENDERBUFFER, format, width, height);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, attachment, GL_RENDERBUFFER, m_buffers[buffer]);
    }

    GLint m_drawBefore = 0, m_readBefore = 0, m_bufferBefore = 0;
    GLuint m_framebuffer = 0;
    GLuint m_buffers[2] = {0, 0};
};

bool FitsRenderer(int width, int height, std::string* why)
{
    GLint buffer = 0, viewport[2] = {0, 0};
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &buffer);
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    const int mostWide = std::min(buffer, viewport[0]), mostHigh = std::min(buffer, viewport[1]);
    if (width <= mostWide && height <= mostHigh)
        return true;
    return Refuse(why, "A picture of " + std::to_string(width) + " x " + std::to_string(height) +
                           " pixels is larger than the renderer's " + std::to_string(mostWide) + " x " +
                           std::to_string(mostHigh) + ".");
}

/// The framebuffer's colours, top row first.
void ReadBack(ZImage& image, int width, int height)
{
    const size_t row = static_cast<size_t>(width) * 4;
    const auto pixels = std::make_unique_for_overwrite<std::uint8_t[]>(row * static_cast<size_t>(height));
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    glPixelStorei(GL_PACK_SKIP_ROWS, 0);
    glPixelStorei(GL_PACK_SKIP_PIXELS, 0);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    // Four bytes a pixel come as they are; three would be converted one by one.
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.get());
    glPopClientAttrib();
    image.width = width;
    image.height = height;
    image.rgb.resize(static_cast<size_t>(width) * static_cast<size_t>(height) * 3);
    std::uint8_t* to = image.rgb.data();
    for (int y = height - 1; y >= 0; --y) {
        const std::uint8_t* from = pixels.get() + row * static_cast<size_t>(y);
        for (int x = 0; x < width; ++x, from += 4, to += 3) {
            to[0] = from[0];
            to[1] = from[1];
            to[2] = from[2];
        }
    }
}
} // namespace

bool ZOffscreen_MakeCurrent(std::string* why)
{
    Offscreen& offscreen = TheOffscreen();
    if (offscreen.context == EGL_NO_CONTEXT && !Make(offscreen, why))
        return false;
    if (eglBindAPI(EGL_OPENGL_API) != EGL_TRUE ||
        eglMakeCurrent(offscreen.display, offscreen.surface, offscreen.surface, offscreen.context) != EGL_TRUE)
        return Refuse(why, "No off-screen OpenGL: " + EglReason("eglMakeCurrent") + ".");
    return true;
}

bool ZOffscreen_Grab(ZViewer& viewer, ZImage& image, std::string* why)
{
    const CurrentGuard guard;
    const int width = viewer.GetWidth(), height = viewer.GetHeight();
    if (!ZOffscreen_MakeCurrent(why) || !FitsRenderer(width, height, why))
        return false;
    const Framebuffer framebuffer(width, height);
    if (!framebuffer.IsComplete())
        return Refuse(why, "The renderer has no framebuffer of " + std::to_string(width) + " x " +
                               std::to_string(height) + " pixels.");
    viewer.Draw();
    ReadBack(image, width, height);
    return true;
}

void ZOffscreen_Release()
{
    Offscreen& offscreen = TheOffscreen();
    if (offscreen.context == EGL_NO_CONTEXT)
        return;
    if (eglGetCurrentContext() == offscreen.context)
        eglMakeCurrent(offscreen.display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(offscreen.display, offscreen.context);
    if (offscreen.surface != EGL_NO_SURFACE)
        eglDestroySurface(offscreen.display, offscreen.surface);
    // The display stays: a toolkit may live on it too, and ending it unloads the driver, which takes long to come back.
    offscreen = Offscreen();
}
