#pragma once

#include "CvBase/common/common_string.h"

#pragma GCC visibility push(default)

/// \file
/// The root of the library's exceptions and the one way to throw them.
///
/// Every failure of a file, folder or stream operation is thrown by value as one of the concrete kinds derived from
/// Exception::Base. Inside namespace Util, where Util::Exception hides this namespace, the root is ::Exception::Base.
/// The classes are visible to other images, so that a program that loads a library built on this one can catch them.

namespace Exception {

/// What every exception of the library carries. Copies share their texts, so copying one is cheap.
class Base {
public:
    /// `message` says in words what failed. Shares its text. May throw std::bad_alloc.
    explicit Base(const String& message);

    /// Shares the texts, and throws nothing.
    Base(const Base&) = default;
    Base& operator=(const Base&) = default;

    virtual ~Base();

    /// Several lines for a log: the kind, the message and where it was thrown, ending with a line feed. Caution: a
    /// placeholder such as "%1" in the source unit's name is replaced by the line. May throw std::bad_alloc.
    [[nodiscard]] virtual String ToString() const;

    /// The message alone.
    [[nodiscard]] const String& GetMessage() const { return message_; }

    /// The source unit that threw, such as "Util/File"; null before SetThrowSite().
    [[nodiscard]] const String& GetSourceFile() const { return sourceFile_; }

    /// The line in that unit; -1 before SetThrowSite().
    [[nodiscard]] int GetLine() const { return line_; }

    /// The last-error value of platforms that have one: 0 once thrown, -1 before SetThrowSite().
    [[nodiscard]] int GetOSErrorAtThrow() const { return osErrorAtThrow_; }

    /// Records where the exception is thrown; Throw() calls it, once. `unit` is copied; a null one makes
    /// GetSourceFile() null. May throw std::bad_alloc.
    void SetThrowSite(const char* unit, int line);

private:
    String message_;
    String sourceFile_;
    int line_ = -1;
    int osErrorAtThrow_ = -1;
};

/// Throws `exception` by value as coming from `line` of the source unit `unit` ("Util/File"). The type thrown is the
/// type passed. If the exception is to carry errno, save errno before you make the exception: making its texts can
/// change errno.
template <class E>
[[noreturn]] void Throw(E exception, const char* unit, int line) {
    exception.SetThrowSite(unit, line);
    throw exception;
}

}  // namespace Exception

#pragma GCC visibility pop
