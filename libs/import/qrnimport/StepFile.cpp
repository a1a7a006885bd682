#include "qrnimport/StepFile.h"

#include "qrnimport/StepTessellation.h"

#include <StepData_GlobalFactors.hxx>
#include <TColStd_SequenceOfAsciiString.hxx>

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace qrnimport {

bool StepFile::numbersInRange(const std::string& path, std::string& problem) {
    std::ifstream in(path, std::ios::binary);
    std::string line;
    for (long number = 1; std::getline(in, line); ++number) {
        bool quoted = false;
        for (std::size_t i = 0; i < line.size(); ++i) {
            const char c = line[i];
            if (c == '\'')
                quoted = !quoted;
            // A real starts with a digit (or a sign) not inside a name, a string or an id.
            if (quoted || !std::isdigit(static_cast<unsigned char>(c)) ||
                (i > 0 && (std::isalnum(static_cast<unsigned char>(line[i - 1])) ||
                           line[i - 1] == '#' || line[i - 1] == '.' || line[i - 1] == '_')))
                continue;
            std::size_t end = i;
            while (end < line.size() && (std::isalnum(static_cast<unsigned char>(line[end])) ||
                                         line[end] == '.' || line[end] == '+' || line[end] == '-'))
                ++end;
            const std::string text = line.substr(i, end - i);
            i = end;
            if (text.find('.') == std::string::npos)
                continue; // an integer: counts and indices, read as such
            const double value = std::strtod(text.c_str(), nullptr);
            if (!std::isfinite(value) || std::fabs(value) > LARGEST) {
                problem = "the number " + text.substr(0, 40) + " on line " +
                          std::to_string(number) + " is out of range";
                return false;
            }
        }
    }
    return true;
}

std::wstring StepFile::lengthUnit(STEPControl_Reader& reader) {
    TColStd_SequenceOfAsciiString lengths, angles, solidAngles;
    reader.FileUnits(lengths, angles, solidAngles);
    if (lengths.IsEmpty())
        return std::wstring();
    TCollection_AsciiString name = lengths.First();
    name.UpperCase();
    static const std::pair<const char*, const wchar_t*> units[] = {
        {"MILLI", L"mm"}, {"CENTI", L"cm"}, {"MICRO", L"um"}, {"KILO", L"km"}, {"INCH", L"in"},
        {"FOOT", L"ft"},  {"MILE", L"mi"},  {"METRE", L"m"},  {"METER", L"m"}};
    for (const auto& u : units)
        if (name.Search(u.first) >= 1)
            return u.second;
    return std::wstring();
}

std::unordered_map<int, std::vector<int>>
StepFile::references(const std::string& path, const std::vector<std::string>& types) {
    std::unordered_map<int, std::vector<int>> out;
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    const std::string s = text.str();
    for (const auto& type : types) {
        // The type alone or as a part of a complex record, its references to the record's end.
        const std::string key = type + "(";
        for (std::size_t at = s.find(key); at != std::string::npos; at = s.find(key, at + 1)) {
            const char before = at > 0 ? s[at - 1] : ' ';
            if (std::isalnum(static_cast<unsigned char>(before)) || before == '_')
                continue;
            const std::size_t start = s.rfind(';', at);
            const std::size_t hash = s.find('#', start == std::string::npos ? 0 : start);
            if (hash == std::string::npos || hash > at)
                continue;
            auto& refs = out[std::atoi(s.c_str() + hash + 1)];
            bool quoted = false;
            for (std::size_t c = at + key.size(); c < s.size() && (quoted || s[c] != ';'); ++c) {
                if (s[c] == '\'')
                    quoted = !quoted;
                else if (!quoted && s[c] == '#')
                    refs.push_back(std::atoi(s.c_str() + c + 1));
            }
        }
    }
    return out;
}

void StepFile::readLeftOut(STEPControl_Reader& reader, const std::string& path, bool pmi,
                           bool drawn, XcafImporter::StepSource& source) {
    const Handle(StepData_StepModel) step = reader.StepModel();
    const double factor = StepData_GlobalFactors::Intance().LengthFactor();
    const double scale = factor > 0.0 ? factor : 1.0;
    StepTessellation::addParts(step, scale, source.tessellated);
    source.pmi = pmi;
    if (pmi) {
        source.presentation = PmiPresentation::read(step, path, scale);
        source.presentation.drawn = drawn;
    }
}

} // namespace qrnimport
