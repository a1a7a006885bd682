#pragma once
// Not part of the library's interface: what the import checks and reads of a STEP file
// beside the reader.

#include "qrnimport/XcafImporter.h"

#include <STEPControl_Reader.hxx>

#include <string>

namespace qrnimport {

class StepFile {
public:
    // Real numbers the reader would choke on: not finite, or so large that trimming a curve
    // by them never ends (the reader loops adding periods). False with the number and its
    // line in problem; the file's coordinates are far smaller.
    static bool numbersInRange(const std::string& path, std::string& problem);
    // The short name of the length unit the file declares ("in"); empty when it names none
    // known. After the file is read.
    static std::wstring lengthUnit(STEPControl_Reader& reader);

    // What the reader leaves out of the document (tessellated solids, and with pmi what the
    // file says of its PMI and, when drawn, how it draws it), read from its STEP model after
    // the transfer, while the reader still holds it.
    static void readLeftOut(STEPControl_Reader& reader, const std::string& path, bool pmi,
                            bool drawn, XcafImporter::StepSource& source);

    static constexpr double LARGEST = 1e12;
};

} // namespace qrnimport
