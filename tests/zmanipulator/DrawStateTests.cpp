// SPDX-License-Identifier: MIT
// What drawing a frame leaves behind in OpenGL.
#include "PictureTest.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <stdexcept>

namespace {
using testing::Each;

/// A framebuffer of the test's own, to look at what Draw leaves behind.
class DrawState : public Picture
{
protected:
    void SetUp() override
    {
        Picture::SetUp();
        std::string why;
        ASSERT_TRUE(ZOffscreen_MakeCurrent(&why)) << why;
        glGenFramebuffers(1, &m_framebuffer);
        glGenRenderbuffers(2, m_buffers);
        glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
        const GLenum formats[2] = {GL_RGBA8, GL_DEPTH_COMPONENT24},
                     places[2] = {GL_COLOR_ATTACHMENT0, GL_DEPTH_ATTACHMENT};
        for (int i = 0; i < 2; ++i) {
            glBindRenderbuffer(GL_RENDERBUFFER, m_buffers[i]);
            glRenderbufferStorage(GL_RENDERBUFFER, formats[i], 200, 150);
            glFramebufferRenderbuffer(GL_FRAMEBUFFER, places[i], GL_RENDERBUFFER, m_buffers[i]);
        }
        glViewport(0, 0, 200, 150);
        AddCube(scene, "cube");
        AddBone(scene, "bone", {0, 0, 0});
        viewer.SetShowGrid(true);
        viewer.SetShading(ZShading::ShadedWire);
        viewer.PickRectStart(10, 10);
        viewer.PickRectMotion(60, 60);
    }
    void TearDown() override
    {
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &m_framebuffer);
        glDeleteRenderbuffers(2, m_buffers);
        ZOffscreen_Release();
        Picture::TearDown();
    }

    /// Everything that one of the two sides could disturb.
    static std::vector<double> State()
    {
        std::vector<double> state;
        for (const GLenum feature :
             {GL_ALPHA_TEST, GL_BLEND, GL_COLOR_ARRAY, GL_COLOR_MATERIAL, GL_CULL_FACE, GL_DEPTH_TEST, GL_LIGHT0,
              GL_LIGHTING, GL_LINE_STIPPLE, GL_NORMALIZE, GL_NORMAL_ARRAY, GL_POLYGON_OFFSET_FILL, GL_SCISSOR_TEST,
              GL_TEXTURE_2D, GL_VERTEX_ARRAY})
            state.push_back(glIsEnabled(feature));
        for (const GLenum number :
             {GL_MATRIX_MODE, GL_MODELVIEW_STACK_DEPTH, GL_PROJECTION_STACK_DEPTH, GL_ATTRIB_STACK_DEPTH,
              GL_CLIENT_ATTRIB_STACK_DEPTH, GL_FRONT_FACE, GL_CULL_FACE_MODE, GL_DEPTH_FUNC, GL_SHADE_MODEL,
              GL_BLEND_SRC, GL_BLEND_DST, GL_CURRENT_PROGRAM, GL_ARRAY_BUFFER_BINDING, GL_ELEMENT_ARRAY_BUFFER_BINDING,
              GL_VERTEX_ARRAY_BINDING, GL_FRAMEBUFFER_BINDING, GL_ACTIVE_TEXTURE, GL_DEPTH_WRITEMASK,
              GL_PACK_ALIGNMENT}) {
            GLint value = -1;
            glGetIntegerv(number, &value);
            state.push_back(value);
        }
        const std::pair<GLenum, int> groups[] = {
            {GL_PROJECTION_MATRIX, 16}, {GL_MODELVIEW_MATRIX, 16},    {GL_CURRENT_COLOR, 4}, {GL_CURRENT_NORMAL, 3},
            {GL_COLOR_CLEAR_VALUE, 4},  {GL_COLOR_WRITEMASK, 4},      {GL_VIEWPORT, 4},      {GL_SCISSOR_BOX, 4},
            {GL_DEPTH_RANGE, 2},        {GL_LIGHT_MODEL_AMBIENT, 4},  {GL_POLYGON_MODE, 2},  {GL_POINT_SIZE, 1},
            {GL_LINE_WIDTH, 1},         {GL_POLYGON_OFFSET_FACTOR, 1}};
        for (const auto& [group, count] : groups) {
            GLdouble values[16] = {};
            glGetDoublev(group, values);
            state.insert(state.end(), values, values + count);
        }
        return state;
    }
    static void MakeUnusualState()
    {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glScalef(0.5F, 0.25F, 2);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glTranslated(1, 2, 3);
        glMatrixMode(GL_TEXTURE);
        glEnable(GL_CULL_FACE);
        glCullFace(GL_FRONT);
        glEnable(GL_BLEND);
        glBlendFunc(GL_ONE, GL_ONE);
        glEnable(GL_LIGHTING);
        glEnable(GL_SCISSOR_TEST);
        glScissor(1, 2, 3, 4);
        glDepthFunc(GL_GREATER);
        glDepthMask(GL_FALSE);
        glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_FALSE);
        glColor4f(0.1F, 0.2F, 0.3F, 0.4F);
        glClearColor(0.5F, 0.6F, 0.7F, 0.8F);
        glFrontFace(GL_CW);
        glShadeModel(GL_FLAT);
        glPointSize(7);
        glLineWidth(3);
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
        glEnableClientState(GL_NORMAL_ARRAY);
    }

private:
    GLuint m_framebuffer = 0;
    GLuint m_buffers[2] = {0, 0};
};

TEST_F(DrawState, IsLeftAsFound)
{
    const std::vector<double> before = State();
    viewer.Draw();
    EXPECT_EQ(State(), before);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(DrawState, IsLeftAsFoundWhateverItWas)
{
    MakeUnusualState();
    const std::vector<double> before = State();
    viewer.Draw();
    EXPECT_EQ(State(), before);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(DrawState, DoesNotChangeThePicture)
{
    viewer.Draw();
    std::vector<std::uint8_t> plain(200 * 150 * 4), unusual(plain.size());
    glReadPixels(0, 0, 200, 150, GL_RGBA, GL_UNSIGNED_BYTE, plain.data());
    MakeUnusualState();
    viewer.Draw();
    glReadPixels(0, 0, 200, 150, GL_RGBA, GL_UNSIGNED_BYTE, unusual.data());
    EXPECT_EQ(plain, unusual);
}

TEST_F(DrawState, AMessyGuestLeavesNoTrace)
{
    auto* const manipulator = new RecordingManipulator(story);
    manipulator->ManipulatorSetHidden(false);
    manipulator->whenDrawn = [](ZManipulatorDraw&) {
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        glMatrixMode(GL_MODELVIEW);
        glPushMatrix();
        glPushMatrix();
        glScalef(3, 3, 3);
        MakeUnusualState();
    };
    const std::vector<double> before = State();
    viewer.Draw();
    EXPECT_EQ(State(), before);
}

TEST_F(DrawState, AGuestThatThrowsLeavesNoTrace)
{
    auto* const manipulator = new RecordingManipulator(story);
    manipulator->ManipulatorSetHidden(false);
    manipulator->whenDrawn = [](ZManipulatorDraw&) {
        glPushMatrix();
        throw std::runtime_error("guest");
    };
    const std::vector<double> before = State();
    EXPECT_THROW(viewer.Draw(), std::runtime_error);
    EXPECT_EQ(State(), before);
    EXPECT_EQ(ZManipulator_GetManipulatorSet()->GetManipulators().size(), 1U);
}

TEST_F(DrawState, AlphaIsOneEverywhere)
{
    auto* const manipulator = new RecordingManipulator(story);
    manipulator->ManipulatorSetHidden(false);
    manipulator->whenDrawn = [](ZManipulatorDraw&) {
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glColor4f(1, 1, 1, 0.25F);
        glBegin(GL_TRIANGLE_FAN);
        glVertex3f(-20, -20, 0);
        glVertex3f(20, -20, 0);
        glVertex3f(0, 20, 0);
        glEnd();
        glDisable(GL_BLEND);
    };
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    viewer.Draw();
    std::vector<std::uint8_t> alpha(200 * 150);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, 200, 150, GL_ALPHA, GL_UNSIGNED_BYTE, alpha.data());
    EXPECT_THAT(alpha, Each(255));
}

TEST_F(DrawState, AProgramAndAnArrayThatAreBoundComeBack)
{
    const GLuint program = glCreateProgram(), shader = glCreateShader(GL_VERTEX_SHADER);
    const char* const source = "void main() { gl_Position = gl_Vertex; }";
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    glAttachShader(program, shader);
    glLinkProgram(program);
    GLuint array = 0;
    glGenVertexArrays(1, &array);
    glUseProgram(program);
    glBindVertexArray(array);
    const std::vector<double> before = State();
    viewer.Draw();
    EXPECT_EQ(State(), before);
    glUseProgram(0);
    glBindVertexArray(0);
    glDeleteVertexArrays(1, &array);
    glDeleteProgram(program);
    glDeleteShader(shader);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(DrawState, GrabbingLeavesTheContextThatWasCurrentCurrent)
{
    const std::vector<double> before = State();
    Grab();
    EXPECT_EQ(State(), before);
}
} // namespace
