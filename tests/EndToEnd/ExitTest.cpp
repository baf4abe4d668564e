// What a process logs on its way out is written.

#include <gtest/gtest.h>

#include <string>

#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/TemporaryFolder.h"

namespace {

TEST(ExitTest, WritesWhatAtexitHandlersAndStaticDestructorsLog) {
  const TemporaryFolder folder;

  const ProcessResult result = RunProgram({EXIT_PROGRAM, folder.Path("exit.log")});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.errors);
  EXPECT_EQ(
      "main\n"
      "atexit, registered last\n"
      "destructor of a local static object\n"
      "atexit, registered first\n"
      "destructor of a static object\n",
      Content(folder.Path("exit.log")));
}

TEST(ExitTest, EndsAlsoWhenAThreadIsStuckInAClient) {
  const TemporaryFolder folder;

  const ProcessResult result = RunProgram({EXIT_PROGRAM, folder.Path("exit.log"), "stuck"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.errors);
  EXPECT_EQ("destructor of a static object", Lines(folder.Path("exit.log")).back());
}

}  // namespace
