// Drawings as the text that other programs draw: Graphviz and Mermaid.
#ifndef CLUSCTL_PICTURE_GRAPHTEXT_H
#define CLUSCTL_PICTURE_GRAPHTEXT_H

#include "Drawing.h"

#include <string>
#include <vector>

namespace picture {

// Names may hold any characters: they stand in labels only, never for a vertex. Lines end with LF.
std::string DotText(const std::vector<GroupDrawing>& drawings);
std::string MermaidText(const std::vector<GroupDrawing>& drawings);

} // namespace picture

#endif
