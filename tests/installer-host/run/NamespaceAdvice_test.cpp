#include "installer-host/run/NamespaceAdvice.h"

#include <gmock/gmock.h>

#include "tests/support/TempDir.h"

namespace {

TEST(NamespaceAdvice, FitsTheSystem) {
    const struct {
        const char* file;
        const char* text;
        const char* toRoot;
        const char* toOthers;
    } cases[] = {
        {".dockerenv", "", "--privileged", "--privileged"},
        {"run/.containerenv", "", "--cap-add SYS_ADMIN", "--cap-add SYS_ADMIN"},
        {"proc/sys/user/max_user_namespaces", "0\n", "user.max_user_namespaces", "user.max_user_namespaces"},
        {"proc/sys/user/max_user_namespaces", "12\n", "user.max_user_namespaces", "user.max_user_namespaces"},
        {"proc/sys/user/max_user_namespaces", "62000\n", "itself in a sandbox", "as root"},
        {"proc/sys/kernel/unprivileged_userns_clone", "0\n", "itself in a sandbox", "unprivileged_userns_clone=1"},
        {"proc/sys/kernel/apparmor_restrict_unprivileged_userns", "1\n", "itself in a sandbox", "profile bwrap"},
        {"proc/sys/kernel/unprivileged_userns_clone", "1\n", "itself in a sandbox", "as root"},
    };
    for (const auto& c : cases) {
        const test::TempDir system;
        test::writeFile(system / c.file, c.text);
        EXPECT_THAT(host::namespaceAdvice(true, system.path()), testing::HasSubstr(c.toRoot)) << c.file;
        EXPECT_THAT(host::namespaceAdvice(false, system.path()), testing::HasSubstr(c.toOthers)) << c.file;
    }
}

}  // namespace
