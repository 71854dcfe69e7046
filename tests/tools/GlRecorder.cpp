#include "GlRecorder.h"

#include <GL/gl.h>

#include <QHash>

namespace {

QStringList kept;

QString name(GLenum value)
{
    static const QHash<GLenum, QString> names = {
        {GL_QUADS, QStringLiteral("GL_QUADS")},
        {GL_LINES, QStringLiteral("GL_LINES")},
        {GL_SMOOTH, QStringLiteral("GL_SMOOTH")},
        {GL_DEPTH_TEST, QStringLiteral("GL_DEPTH_TEST")},
        {GL_LEQUAL, QStringLiteral("GL_LEQUAL")},
        {GL_PERSPECTIVE_CORRECTION_HINT, QStringLiteral("GL_PERSPECTIVE_CORRECTION_HINT")},
        {GL_NICEST, QStringLiteral("GL_NICEST")},
        {GL_PROJECTION, QStringLiteral("GL_PROJECTION")},
        {GL_MODELVIEW, QStringLiteral("GL_MODELVIEW")},
        {GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT, QStringLiteral("GL_COLOR_BUFFER_BIT|GL_DEPTH_BUFFER_BIT")},
    };
    return names.value(value, QString::number(value));
}

QString text(double value)
{
    return QString::number(value);
}

void keep(const char* function, const QStringList& arguments)
{
    kept.append(QLatin1String(function) + QLatin1Char('(') + arguments.join(QStringLiteral(", ")) + QLatin1Char(')'));
}

QStringList texts(std::initializer_list<double> values)
{
    QStringList list;
    for (double value : values)
        list.append(text(value));
    return list;
}

} // namespace

const QStringList& gl_recorder::calls()
{
    return kept;
}

void gl_recorder::clear()
{
    kept.clear();
}

extern "C" {

void glBegin(GLenum mode)
{
    keep("glBegin", {name(mode)});
}

void glEnd()
{
    keep("glEnd", {});
}

void glVertex3f(GLfloat x, GLfloat y, GLfloat z)
{
    keep("glVertex3f", texts({x, y, z}));
}

void glColor3f(GLfloat r, GLfloat g, GLfloat b)
{
    keep("glColor3f", texts({r, g, b}));
}

void glColor4f(GLfloat r, GLfloat g, GLfloat b, GLfloat a)
{
    keep("glColor4f", texts({r, g, b, a}));
}

void glLineWidth(GLfloat width)
{
    keep("glLineWidth", texts({width}));
}

void glShadeModel(GLenum mode)
{
    keep("glShadeModel", {name(mode)});
}

void glClearColor(GLclampf r, GLclampf g, GLclampf b, GLclampf a)
{
    keep("glClearColor", texts({r, g, b, a}));
}

void glClearDepth(GLclampd depth)
{
    keep("glClearDepth", texts({depth}));
}

void glClear(GLbitfield mask)
{
    keep("glClear", {name(mask)});
}

void glEnable(GLenum capability)
{
    keep("glEnable", {name(capability)});
}

void glDepthFunc(GLenum function)
{
    keep("glDepthFunc", {name(function)});
}

void glHint(GLenum target, GLenum mode)
{
    keep("glHint", {name(target), name(mode)});
}

void glViewport(GLint x, GLint y, GLsizei width, GLsizei height)
{
    keep("glViewport", texts({double(x), double(y), double(width), double(height)}));
}

void glMatrixMode(GLenum mode)
{
    keep("glMatrixMode", {name(mode)});
}

void glLoadIdentity()
{
    keep("glLoadIdentity", {});
}

void glOrtho(GLdouble left, GLdouble right, GLdouble bottom, GLdouble top, GLdouble zNear, GLdouble zFar)
{
    keep("glOrtho", texts({left, right, bottom, top, zNear, zFar}));
}

void glTranslatef(GLfloat x, GLfloat y, GLfloat z)
{
    keep("glTranslatef", texts({x, y, z}));
}

void glRotatef(GLfloat angle, GLfloat x, GLfloat y, GLfloat z)
{
    keep("glRotatef", texts({angle, x, y, z}));
}
}
