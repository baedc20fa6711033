#include "installer-host/matrix/CaseList.h"

#include "installer-host/matrix/MatrixResult.h"
#include "plugin/InstallStatusFile.h"
#include "tests/support/Test.h"

namespace {

using namespace host;
using namespace test;

/// The names of the cases in a file with this text.
std::string namesIn(const std::string& text) {
    const TempDir folder;
    writeFile(folder / "cases", text);
    writeFile(folder / "own, status.txt", "own");
    MatrixOptions options;
    options.cases = folder / "cases";
    std::string names;
    for (const MatrixCase& one : casesOf(options).cases) {
        names += one.name + ";";
    }
    return names;
}

TEST(CaseList, ComesFromAFile) {
    const std::pair<const char*, const char*> right[] = {
        {"product\n5100\n", "5100/0/as-is;"},
        {"\xEF\xBB\xBFstatus,product,language\r\non,5100,-1\r\n\r\n\"own, status.txt\",7,11\r\n",
         "5100/-1/on;7/11/own, status.txt;"},
        {R"( [{"product": 5100}, {"product": 7, "language": 2, "status": "none"}])", "5100/0/as-is;7/2/none;"},
    };
    for (const auto& [text, names] : right) {
        EXPECT_EQ(namesIn(text), names);
    }
    std::string many = "product\n";
    for (int i = 0; i < 10000; ++i) {
        many += std::to_string(i) + "\n";
    }
    EXPECT_NE(namesIn(many), "");
    many += "-1\n";
    const std::pair<std::string, const char*> wrong[] = {
        {"", "is empty"},
        {"product\n", "is empty"},
        {"language\n1\n", "line 1: the header lacks the column product"},
        {"product,price\n", "not 'price'"},
        {"product,product\n", "not 'product'"},
        {"product\n5100\nfr\n", "line 3: 'fr' is not the code of a product"},
        {"product,language\n5100,2147483648\n", "line 2: '2147483648' is not the code of a language"},
        {"product,language\n5100\n", "line 2: the header has 2 columns, this line has 1"},
        {"product,status\n5100,\"on\n", "line 2: a double quote is missing"},
        {"product\n5100\n5100\n", "the case 5100/0/as-is is there twice"},
        {"product,status\n1,own, status.txt", "2 columns, this line has 3"},
        {"product,status\n1,missing.txt", "missing.txt' cannot be read"},
        {"[{\"language\": 1}]", "case 1: it is not an object with a product"},
        {R"([{"product": 1}, {"product": "2"}])", "case 2:"},
        {R"([{"product": 1, "lang": 2}])", "case 1:"},
        {R"({"product": 1})", "no array"},
        {"[1", "is not JSON"},
        {"[{\"product\": 1, \"language\":" + std::string(100000, '[') + std::string(100000, ']') + "}]", "too deeply"},
        {many, "10000 cases at most"},
    };
    for (const auto& [text, problem] : wrong) {
        try {
            ADD_FAILURE() << text << ": " << namesIn(text);
        } catch (const Failure& failure) {
            EXPECT_THAT(failure.what(), HasSubstr(problem)) << text;
        }
    }
}

TEST(CaseList, OfARerunIsWhatDidNotPass) {
    const TempDir folder;
    MatrixOptions options;
    options.rerun = folder / "report";
    writeFile(options.rerun, R"({"statuses": [{"status": "on", "file": null}], "cases": [
        {"name": "1/0/on", "product": 1, "language": 0, "status": "on", "outcome": "passed"},
        {"name": "2/0/on", "product": 2, "language": 0, "status": "on", "outcome": "failed"},
        {"name": "3/0/on", "product": 3, "language": 0, "status": "on", "outcome": "not run"}]})");
    const CaseList list = casesOf(options);
    ASSERT_EQ(list.cases.size(), 2U);
    EXPECT_EQ(list.cases[0].name + list.cases[1].name, "2/0/on3/0/on");
    EXPECT_THAT(list.passed, ElementsAre("1/0/on")) << "an expectation of it is none that was not used";
    for (const char* product : {"7.5", "1e300", "2147483648", "\"7\"", "[[]]"}) {
        writeFile(options.rerun,
                  R"({"statuses": [{"status": "on", "file": null}], "cases": [{"outcome": "failed", "product": )" +
                      std::string(product) + R"(, "language": 0, "status": "on"}]})");
        EXPECT_THROW(casesOf(options), Failure) << product;
    }
}

/// A link in the root must not lead the file out of it.
TEST(InstallStatus, StaysInTheRoot) {
    const TempDir outside, root;
    fs::create_directories(root / "Library/Application Support");
    fs::create_directory_symlink(outside.path(), root / "Library/Application Support/Corvane");
    EXPECT_THROW(putInstallStatus(RootFolder(root.path()), installStatus("on", "/")), Failure);
    fs::remove(root / "Library/Application Support/Corvane");
    const std::string file = root.path() + INSTALL_STATUS_FILE;
    writeFile(outside / "kept", "kept");
    fs::create_directories(fs::path(file).parent_path());
    fs::create_symlink(outside / "kept", file);
    putInstallStatus(RootFolder(root.path()), installStatus("as-is", "/"));
    EXPECT_TRUE(fs::is_symlink(file));
    putInstallStatus(RootFolder(root.path()), installStatus("off", "/"));
    EXPECT_EQ(readFile(file), "UpdatesDisabled\n");
    EXPECT_EQ(readFile(outside / "kept"), "kept");
    putInstallStatus(RootFolder(root.path()), installStatus("none", "/"));
    EXPECT_FALSE(fs::exists(fs::symlink_status(file)));
}

TEST(MatrixResult, TakesItsStatusFromTheWorstCase) {
    MatrixResult matrix;
    const auto statusOf = [&](const std::vector<int>& statuses) {
        matrix.results.clear();
        for (const int status : statuses) {
            CaseResult result;
            result.outcome = status == 0 ? CaseResult::Outcome::Passed : CaseResult::Outcome::Failed;
            result.status = static_cast<ExitStatus>(status);
            result.duration = std::chrono::milliseconds(status == 9 ? 1500 : 400);
            matrix.results.push_back(result);
        }
        markSlow(matrix.results);
        return static_cast<int>(judge(matrix).status);
    };
    EXPECT_EQ(statusOf({0, 0}), 0);
    EXPECT_EQ(statusOf({0, 8, 7}), 7);
    EXPECT_EQ(statusOf({8, 1, 0}), 1);
    EXPECT_EQ(statusOf({9, 1, 3}), 9);
    EXPECT_TRUE(matrix.results.front().isSlow && !matrix.results.back().isSlow);
    EXPECT_EQ(statusOf({9, 5}), 5);
    EXPECT_EQ(statusOf({7, 1}), 1);
    matrix.unused = {"5100/0/on"};
    EXPECT_EQ(statusOf({0}), 8);
    matrix.signal = 2;
    EXPECT_EQ(statusOf({5}), 130);
}

}  // namespace
