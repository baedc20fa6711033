#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "installer-host/ExitStatus.h"
#include "installer-host/Installation.h"
#include "installer-host/look/Selection.h"
#include "installer-host/terminal/Colors.h"

namespace host {

enum class Command { Run, Matrix, Undo, Check, Show };
enum class Format { Text, Json, Html };

/// What only `matrix` has. Each list is in the order of the command line.
struct MatrixOptions {
    std::vector<std::int32_t> products;
    std::vector<std::int32_t> languages;
    std::vector<std::string> statuses;  ///< words, or paths of files
    std::string cases;                  ///< the file with the cases, in place of the lists; empty: none
    std::string rerun;                  ///< the report whose failed cases are to be run; empty: none
    std::string junit;                  ///< the file that gets a report for JUnit; empty: none
    unsigned jobs = 0;                  ///< how many cases run at a time; 0: as many as there are processors
};

/// What the command line asks for. The fields that a command does not have keep their defaults.
struct Options {
    Command command = Command::Run;
    std::string bundle;
    Installation installation;  ///< without steps for the other commands than `run`
    bool machine = false;       ///< `run` and `show`: work on the machine itself
    std::string root;           ///< the private root; empty with `machine`, and for `check`, which works on neither
    std::vector<std::string> scope;  ///< `run` with `machine`: the folders that are looked at, absolute paths
    std::string journal;             ///< `run`: the journal to write, if any; `undo`: the one to undo
    bool dryRun = false;
    bool changesExit = false;  ///< a run that changed something, or would have, ends with a status of its own
    std::string expect;        ///< the file with the expected outcome; empty: none
    std::string writeExpect;   ///< the file to write the outcome into; empty: none
    MatrixOptions matrix;
    Format format = Format::Text;
    unsigned timeout = 60;  ///< seconds; 0: none
    Selection selection;    ///< `show`: what of the preferences
    std::string diff;       ///< `show`: the root to compare with; empty: none
    bool quiet = false;     ///< only failures are told
    unsigned verbose = 0;   ///< how often it was asked to tell more: 0, 1, 2
    std::string log;        ///< the file that gets a line for each event; empty: none
    ColorWhen color = ColorWhen::Auto;
};

/// What the command line came to: options to work with, or a text for the user and the end.
struct ParsedOptions {
    bool proceed = false;
    Options options;                       ///< without `proceed` only the format and the colours count
    ExitStatus status = ExitStatus::Done;  ///< when there is nothing to do
    std::string text;                      ///< then: for standard output with Done, what is wrong otherwise
    std::string advice;                    ///< what to do about what is wrong
};

/// Reads the command line. The paths in it are as given; Plan.h finds what they lead to.
ParsedOptions parseOptions(int argc, const char* const* argv);

}  // namespace host
