#pragma once

#include "qrn/IDocument.h"

#include <memory>
#include <string>

namespace qrnviewer {

// Draws one frame of a document off screen, through the library's bitmap context and canvas,
// and writes it as a PNG.
class Snapshot {
public:
    // False with a reason in error when no context could be made or the file not written.
    static bool write(const std::shared_ptr<qrn::IDocument>& document, unsigned int width,
                      unsigned int height, const std::string& path, std::string& error);
};

} // namespace qrnviewer
