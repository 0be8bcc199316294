// The alpha that a blurred straight edge has at a distance from its middle.
#pragma once

// `distance` in standard deviations of the blur, positive inside. The integral of the cubic B-spline
// of the same deviation, which stays within 0.01 of the Gaussian's and is a polynomial: it has the
// same bits on every machine.
float blurredEdge(float distance);
