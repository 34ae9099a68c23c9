#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/TemporaryFolder.hpp"

namespace velmo::test {

/// How a program ended and what it wrote.
struct ProgramResult {
  int status = -1;  ///< exit status; -1 when a signal ended the program
  int signal = 0;   ///< the signal that ended the program; 0 when it left by itself
  std::string out;  ///< standard output
  std::string err;  ///< standard error
};

/// The whole content of a file; empty when there is none.
inline std::string readFile(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

/// Runs a program to its end in `workingDirectory`. Both outputs go to files, as they would under a
/// batch system: what the program doesn't flush is lost, and no pipe can fill up.
///
/// @throws std::runtime_error when the program can't be started
inline ProgramResult runProgram(const std::string& program,
                                const std::vector<std::string>& arguments,
                                const std::filesystem::path& workingDirectory = ".") {
  const TemporaryFolder outputs;
  const std::string outFile = outputs.path() / "out";
  const std::string errFile = outputs.path() / "err";
  std::vector<std::string> words{program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  constexpr int kCreate = O_WRONLY | O_CREAT | O_TRUNC;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outFile.c_str(), kCreate, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errFile.c_str(), kCreate, 0600);
  posix_spawn_file_actions_addchdir_np(&actions, workingDirectory.c_str());
  pid_t process = 0;
  const int error = posix_spawn(&process, program.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  int wait = 0;
  if (error != 0 || waitpid(process, &wait, 0) != process)
    throw std::runtime_error("could not run " + program);

  ProgramResult result;
  if (WIFEXITED(wait)) result.status = WEXITSTATUS(wait);
  if (WIFSIGNALED(wait)) result.signal = WTERMSIG(wait);
  result.out = readFile(outFile);
  result.err = readFile(errFile);
  return result;
}

}  // namespace velmo::test
