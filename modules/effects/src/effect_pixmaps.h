#pragma once

#include "kivlib/hdr/IntRect.h"
#include "kivlib/hdr/Owned.h"

#include <memory>

class CDataImage;
class KIVPixmap;

// What the effects have in common in their work on pixmaps.

/// Takes the pixmap out of an input and sees to its having alpha. Null if there is nothing in it.
std::unique_ptr<KIVPixmap> take_picture(CDataImage* input);

/// Where the top left pixel of the output lies in the padded pixmap of an input, in rows from the
/// top. `process_rect` begins where the input's own area does.
IntVector2 find_output_in(const CDataImage& output, const CDataImage& input,
                          const IntRect& process_rect);
