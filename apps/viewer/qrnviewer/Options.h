#pragma once

#include <string>

namespace qrnviewer {

// The viewer's command line.
struct Options {
    std::string model;    // empty: the built-in demo assembly
    std::string snapshot; // PNG to write; empty: interactive
    unsigned int width = 1024;
    unsigned int height = 768;
    std::string view = "iso";
    bool help = false;

    // False with a message in error for a command line that makes no sense.
    static bool parse(int argc, const char* const* argv, Options& options, std::string& error);
    static std::string usage();
};

} // namespace qrnviewer
