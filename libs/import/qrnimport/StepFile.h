#pragma once
// Not part of the library's interface: what the import checks and reads of a STEP file
// beside the reader.

#include "qrnimport/XcafImporter.h"

#include <STEPControl_Reader.hxx>

#include <string>
#include <unordered_map>
#include <vector>

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

    // The references of the records of the given types (alone or as parts of complex
    // records), in order, by record id, from the file's own text: for the links the reader
    // leaves empty where it refuses what they point at.
    static std::unordered_map<int, std::vector<int>>
    references(const std::string& path, const std::vector<std::string>& types);

    static constexpr double LARGEST = 1e12;
};

} // namespace qrnimport
