// Drawings as pictures in SVG, made without the help of other programs.
#ifndef CLUSCTL_PICTURE_SVG_H
#define CLUSCTL_PICTURE_SVG_H

#include "Drawing.h"

#include <string>
#include <vector>

namespace picture {

// Rules of CSS for all that SvgPicture draws; light, or dark where the reader wants it so.
const char* SvgStyle();

enum class SvgForm {
    File,  // a file of its own, with its rules
    Inline // part of a page that holds the rules
};

// The groups one below the other, each in a frame with its title. A box shows a name, shortened when it is long, and
// tells it whole when it is pointed at.
std::string SvgPicture(const std::vector<GroupDrawing>& drawings, SvgForm form);

} // namespace picture

#endif
