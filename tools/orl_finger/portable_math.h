#pragma once

// Arithmetic for the sample generator, whose records must be the same bytes on every platform.
//
// The C library's sin, cos and atan2 may differ in the last bit from one library to the next, and
// one such bit can move a rounded pixel. So the functions here use nothing but + - * / and sqrt and
// floor, which IEEE 754 defines to the last bit, and the build forbids fused multiply-adds. They
// are accurate to about 1e-10, far below a pixel or an angle step.
//
// Angles are turns: 1.0 is the full circle, 0.25 a right angle, counter-clockwise with y up.
// All functions are pure and never throw.

namespace orl::tools {

struct Vector {
    double x = 0;
    double y = 0;
};

// Sine and cosine of any finite angle.
double sineOfTurns(double turns);
double cosineOfTurns(double turns);

// Direction of the vector (x, y), in (-0.5, 0.5]; 0 for the null vector.
double turnsOfVector(double y, double x);

// The vector turned counter-clockwise.
Vector rotated(const Vector& v, double turns);

double lengthOf(const Vector& v);

// The part of the angle in [0, 1).
double wrappedTurns(double turns);

// The nearest whole number, halves up. REQUIRES: |value| below 2^31.
int roundedToInt(double value);

}  // namespace orl::tools
