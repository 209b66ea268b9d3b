// Running the zanfe command as a user does: a separate process, its output, its error
// lines and its exit status.
#pragma once

#include <string>
#include <vector>

struct ToolRun {
    int status = -1;   // exit status; -1 if the tool did not exit normally
    std::string out, err;
    std::vector<std::string> err_lines() const;
};

std::vector<std::string> split_lines(const std::string& text);
std::string slurp(const std::string& path);

// Runs the tool with args; env entries "NAME=value" are added, "NAME" alone is removed.
ToolRun zanfe(const std::vector<std::string>& args, const std::vector<std::string>& env = {});

// A failure: non-zero status, nothing on standard output, exactly one error line.
void expect_one_line_failure(const ToolRun& r, const std::string& line);

// A file written for the test; removed when the test ends.
struct TempFile {
    std::string path;
    explicit TempFile(const std::string& text);
    ~TempFile();
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
};
