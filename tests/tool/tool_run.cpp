#include "tool_run.hpp"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

std::vector<std::string> split_lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

std::vector<std::string> ToolRun::err_lines() const { return split_lines(err); }

std::string slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

ToolRun zanfe(const std::vector<std::string>& args, const std::vector<std::string>& env) {
    char dir_template[] = "/tmp/zanfe-test-XXXXXX";
    const char* dir = mkdtemp(dir_template);
    if (dir == nullptr) {
        ADD_FAILURE() << "mkdtemp";
        return {};
    }
    const std::string out_path = std::string(dir) + "/out", err_path = std::string(dir) + "/err";

    std::vector<std::string> env_strings;
    for (char** e = environ; *e; ++e) {
        const std::string entry(*e);
        const std::string name = entry.substr(0, entry.find('='));
        bool replaced = false;
        for (const auto& x : env) replaced |= x.substr(0, x.find('=')) == name;
        if (!replaced && name != "ZANFE_LIBRARY") env_strings.push_back(entry);
    }
    for (const auto& x : env)
        if (x.find('=') != std::string::npos) env_strings.push_back(x);
    std::vector<char*> envp, argv{const_cast<char*>(ZANFE_TOOL)};
    for (auto& s : env_strings) envp.push_back(s.data());
    envp.push_back(nullptr);
    std::vector<std::string> arg_copy = args;
    for (auto& a : arg_copy) argv.push_back(a.data());
    argv.push_back(nullptr);

    const pid_t pid = fork();
    if (pid == 0) {
        const int in = open("/dev/null", O_RDONLY);
        const int out = open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        const int err = open(err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (in < 0 || out < 0 || err < 0) _exit(126);
        dup2(in, 0);
        dup2(out, 1);
        dup2(err, 2);
        execve(ZANFE_TOOL, argv.data(), envp.data());
        _exit(127);
    }
    ToolRun r;
    int wstatus = 0;
    if (pid > 0 && waitpid(pid, &wstatus, 0) == pid && WIFEXITED(wstatus)) r.status = WEXITSTATUS(wstatus);
    r.out = slurp(out_path);
    r.err = slurp(err_path);
    std::remove(out_path.c_str());
    std::remove(err_path.c_str());
    rmdir(dir);
    return r;
}

// A failure: non-zero status, nothing on standard output, exactly one error line.
void expect_one_line_failure(const ToolRun& r, const std::string& line) {
    EXPECT_NE(r.status, 0);
    EXPECT_GT(r.status, 0) << "the tool must exit, not crash";
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err_lines(), std::vector<std::string>{line}) << r.err;
}

TempFile::TempFile(const std::string& text) {
    char name[] = "/tmp/zanfe-site-XXXXXX";
    const int fd = mkstemp(name);
    path = name;
    if (fd < 0 || write(fd, text.data(), text.size()) != ssize_t(text.size())) ADD_FAILURE() << "temp file";
    if (fd >= 0) close(fd);
}

TempFile::~TempFile() { std::remove(path.c_str()); }
