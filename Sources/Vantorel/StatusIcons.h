#pragma once

#include "Platform/AppKit/Color.h"
#include "Platform/AppKit/Image.h"
#include "Platform/Foundation/Geometry.h"

/// The coffee cup, drawn in code on a grid of 18 × 18 units with the origin at the bottom left.
/// The constants are made once, on first use, safely from any thread.
namespace StatusIcons {

/// The cup's warm brown.
const NS::Color& coffee();
/// While the machine may sleep: a template, tinted to fit the bar.
const NS::Image& outline();
/// While the machine is kept awake: in color.
const NS::Image& filled();

/// Draws the cup into the current drawing, as large as the smaller side of `rect` allows, at its bottom-left corner.
void drawCup(const NS::Rect& rect, bool filled, const NS::Color& color);

} // namespace StatusIcons
