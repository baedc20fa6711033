#pragma once

#include <stdexcept>
#include <string>

#include "installer-host/Judgement.h"
#include "installer-host/options/Options.h"
#include "installer-host/report/JsonReport.h"

namespace host {

/// The report could not be written, so an error report could not be written either.
struct OutputLost : std::runtime_error {
    OutputLost() : std::runtime_error("the report could not be written to standard output") {}
};

/// Makes the program as talkative and as colourful as the options say, and opens the log. Throws Failure (Usage) when
/// the log lies where its lines would count as changes, and what openLog() throws.
void beginAsAsked(const Options& options);

/// Writes a report, or the help, to standard output, to the last byte. Throws OutputLost.
void print(const std::string& text);

/// The same for a report of TextReport.h, in colours where standard output has them.
void printText(const std::string& report);

/// The document in a format other than text, which the documents are not made for.
std::string formatted(const Json& document, Format format);

/// Prints a report in the format that the user asked for. Of the two functions that make its text and its document,
/// only the one that is needed is called. Throws OutputLost.
template <typename Text, typename Document>
void printReport(const Options& options, const Text& text, const Document& document) {
    if (options.format == Format::Text) {
        printText(text());
    } else {
        print(formatted(document(), options.format));
    }
}

/// Explains to the user on standard error what went wrong, if anything did.
void explain(const Judgement& judgement);

/// What the exception that is being handled means for a command that it leaves without a report. Passes OutputLost on.
Judgement judgementOfException();

/// Throws Interrupted if the user has asked for the end; for use while there is nothing to report.
void endIfInterrupted();

}  // namespace host
