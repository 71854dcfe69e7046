#pragma once

/// The three unit axes and a grid sheet in each coordinate plane, drawn with immediate-mode OpenGL.
class GridAxes
{
public:
    GridAxes(int xDivisions, int yDivisions, int zDivisions);

    /// Draws into the current OpenGL context.
    void draw() const;

private:
    int xDivisions;
    int yDivisions;
    int zDivisions;
};
