// SPDX-License-Identifier: MIT
// What the overlay leaves behind in a real OpenGL context, read back from it.
#include "GestureStage.h"

#include "zmanipulator/ZOffscreen.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <gmock/gmock.h>

#include <map>
#include <string>

namespace {

using Values = std::map<std::string, std::vector<double>>;

Values Features()
{
    Values values;
    for (const auto& [name, feature] :
         std::initializer_list<std::pair<const char*, GLenum>>{{"alpha test", GL_ALPHA_TEST},
                                                               {"blend", GL_BLEND},
                                                               {"cull face", GL_CULL_FACE},
                                                               {"depth test", GL_DEPTH_TEST},
                                                               {"lighting", GL_LIGHTING},
                                                               {"line stipple", GL_LINE_STIPPLE},
                                                               {"point smooth", GL_POINT_SMOOTH},
                                                               {"scissor test", GL_SCISSOR_TEST},
                                                               {"vertex array", GL_VERTEX_ARRAY},
                                                               {"colour array", GL_COLOR_ARRAY}})
        values[name] = {static_cast<double>(glIsEnabled(feature))};
    return values;
}

/// Everything that an overlay could disturb.
Values State()
{
    struct Group
    {
        const char* name;
        GLenum what;
        size_t count;
    };
    Values values = Features();
    for (const Group& group :
         {Group{"projection matrix", GL_PROJECTION_MATRIX, 16}, Group{"modelview matrix", GL_MODELVIEW_MATRIX, 16},
          Group{"projection stack", GL_PROJECTION_STACK_DEPTH, 1},
          Group{"modelview stack", GL_MODELVIEW_STACK_DEPTH, 1}, Group{"attribute stack", GL_ATTRIB_STACK_DEPTH, 1},
          Group{"client attribute stack", GL_CLIENT_ATTRIB_STACK_DEPTH, 1}, Group{"matrix mode", GL_MATRIX_MODE, 1},
          Group{"blend source", GL_BLEND_SRC, 1}, Group{"blend destination", GL_BLEND_DST, 1},
          Group{"depth mask", GL_DEPTH_WRITEMASK, 1}, Group{"depth function", GL_DEPTH_FUNC, 1},
          Group{"point size", GL_POINT_SIZE, 1}, Group{"line width", GL_LINE_WIDTH, 1},
          Group{"colour", GL_CURRENT_COLOR, 4}, Group{"polygon mode", GL_POLYGON_MODE, 2},
          Group{"front face", GL_FRONT_FACE, 1}, Group{"shade model", GL_SHADE_MODEL, 1},
          Group{"viewport", GL_VIEWPORT, 4}, Group{"array buffer", GL_ARRAY_BUFFER_BINDING, 1}}) {
        GLdouble read[16] = {};
        glGetDoublev(group.what, read);
        values[group.name].assign(read, read + group.count);
    }
    return values;
}

class OverlayState : public GestureStage
{
protected:
    void SetUp() override
    {
        std::string why;
        ASSERT_TRUE(ZOffscreen_MakeCurrent(&why)) << why;
        glGenFramebuffers(1, &m_framebuffer);
        glGenRenderbuffers(1, &m_colours);
        glBindRenderbuffer(GL_RENDERBUFFER, m_colours);
        glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, 64, 64);
        glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, m_colours);
        bone->SetFileTransform(ZgeTranslation({2, 1, 0}));
        tool.selectedBones.Add(0);
        data->SetVertexState(1, 2);
        data->SetVertexState(2, 1);
    }
    void TearDown() override
    {
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &m_framebuffer);
        glDeleteRenderbuffers(1, &m_colours);
        ZOffscreen_Release();
    }
    void DrawOverlay()
    {
        ZManipulatorDraw draw;
        draw.viewer = &viewer;
        draw.camera = &viewer.GetCamera();
        draw.viewerVector = {0, 0, 1};
        manipulator->ManipulatorDraw(draw);
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    }

private:
    GLuint m_framebuffer = 0, m_colours = 0; ///< something to draw into
};

TEST_F(OverlayState, IsLeftAsFound)
{
    const Values before = State();
    DrawOverlay();
    EXPECT_EQ(State(), before);
}

TEST_F(OverlayState, IsLeftAsFoundWhateverItWas)
{
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glScalef(0.5F, 0.25F, 2);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslated(1, 2, 3);
    glMatrixMode(GL_TEXTURE);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE);
    glDepthMask(GL_FALSE);
    glDepthFunc(GL_GREATER);
    glPointSize(7);
    glLineWidth(3);
    glColor4f(0.1F, 0.2F, 0.3F, 0.4F);
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    glViewport(1, 2, 30, 40);
    const Values before = State();
    DrawOverlay();
    EXPECT_EQ(State(), before);
}

TEST_F(OverlayState, ASecondDrawingIsLikeTheFirst)
{
    DrawOverlay();
    const Values once = State();
    DrawOverlay();
    EXPECT_EQ(State(), once);
}

} // namespace
