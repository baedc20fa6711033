#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "CvBase/Util/Exception/FileIO.h"

namespace test {

inline std::string str(const String& text) {
    return std::string(text.CStr(), text.Length());
}

inline FilePath pathOf(const std::string& path) {
    return FilePath(path.c_str(), false);
}

/// The FileIO that `action` throws; none, and a failed test, when it throws nothing. Other exceptions pass.
template <class Action>
std::optional<Util::Exception::FileIO> thrownBy(const Action& action) {
    try {
        action();
    } catch (const Util::Exception::FileIO& caught) {
        return caught;
    }
    ADD_FAILURE() << "nothing was thrown";
    return std::nullopt;
}

/// Expects that `action` throws a FileIO with these fields, out of Util/File.
template <class Action>
void expectFileFailure(const Action& action, const std::string& message, Util::Exception::FileIO::ErrorType kind,
                       int osError, const std::string& path) {
    SCOPED_TRACE(message);
    if (const auto caught = thrownBy(action)) {
        EXPECT_EQ(str(caught->GetMessage()), message);
        EXPECT_EQ(caught->GetErrorType(), kind);
        EXPECT_EQ(caught->GetOSError(), osError);
        EXPECT_EQ(str(caught->GetFile().GetInternal()), path);
        EXPECT_TRUE(caught->GetFolder().IsEmpty());
        EXPECT_EQ(str(caught->GetSourceFile()), "Util/File");
        EXPECT_GT(caught->GetLine(), 0);
        EXPECT_EQ(caught->GetOSErrorAtThrow(), 0);
    }
}

/// Expects that `action` throws a FileIO that concerns `folder` (its stored text), out of `line` of Util/Dir_mac.
template <class Action>
void expectFolderFailure(const Action& action, const std::string& message, Util::Exception::FileIO::ErrorType kind,
                         int line, const std::string& folder) {
    SCOPED_TRACE(message);
    if (const auto caught = thrownBy(action)) {
        EXPECT_EQ(str(caught->GetMessage()), message);
        EXPECT_EQ(caught->GetErrorType(), kind);
        EXPECT_EQ(caught->GetOSError(), 0);
        EXPECT_TRUE(caught->GetFile().IsEmpty());
        EXPECT_EQ(str(caught->GetFolder().GetInternal()), folder);
        EXPECT_EQ(str(caught->GetSourceFile()), "Util/Dir_mac");
        EXPECT_EQ(caught->GetLine(), line);
        EXPECT_EQ(caught->GetOSErrorAtThrow(), 0);
    }
}

}  // namespace test
