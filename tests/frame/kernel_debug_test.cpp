// The kernel debug channel: who gets which line, and the error log.

#include "kalvobase/kernel_debug.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "frame/mp_kernel_debug.h"
#include "support/channel.h"
#include "support/folder.h"
#include "support/log_tree.h"

namespace {

std::vector<std::string> order;

void ErrorFunction(int level, const char* format, va_list args) {
  char text[100];
  std::vsnprintf(text, sizeof(text), format, args);
  order.push_back("error " + std::to_string(level) + " " + text);
}

void LogFunction(int level, const char* format, va_list args) {
  char text[100];
  std::vsnprintf(text, sizeof(text), format, args);
  order.push_back("log " + std::to_string(level) + " " + text);
}

void Say(MP_KernelDebug* channel, bool print, int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  if (print) {
    channel->Print(level, format, args);
  } else {
    channel->Log(level, format, args);
  }
  va_end(args);
}

TEST(KernelDebug, GivesErrorsToBothCallbacksInOrder) {
  order.clear();
  MP_KernelDebug channel;
  Say(&channel, false, -4097, "nobody %d", 1);
  channel.SetLog(LogFunction);
  channel.SetErrorLog(ErrorFunction);
  Say(&channel, false, -4096, "%d %s", 2, "two");
  Say(&channel, false, -4095, "%d", 3);
  Say(&channel, true, -4097, "%d", 4);
  channel.SetErrorLog(nullptr);
  Say(&channel, false, -4097, "%d", 5);
  channel.SetLog(nullptr);
  Say(&channel, false, -4097, "%d", 6);
  EXPECT_EQ(order, (std::vector<std::string>{"error -4096 2 two", "log -4096 2 two", "log -4095 3",
                                             "log -4097 5"}));
}

TEST(KernelDebug, KeepsAnErrorLogIfTheEnvironmentAsksForIt) {
  const support::Folder folder;
  const std::string directory = folder.Path("errors");
  setenv("Kalvo_Err_LogDir", directory.c_str(), 1);
  testing::internal::CaptureStdout();
  {
    MP_KernelDebug channel;
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Kalvo_Err_LogDir = " + directory + "\n");
    Say(&channel, false, -1, "not this");
    Say(&channel, true, -4097, "nor this");
    EXPECT_FALSE(std::filesystem::exists(directory));
    Say(&channel, false, -4097, "but %s", "this");
    channel.SetErrorLog(ErrorFunction);
    Say(&channel, false, -4097, "not with a callback");
    channel.SetErrorLog(nullptr);
    Say(&channel, false, -4097, "nor ever again");
  }
  unsetenv("Kalvo_Err_LogDir");
  const auto files = support::LogFiles(directory);
  ASSERT_EQ(files.size(), 1u);
  EXPECT_NE(files.begin()->first.find("/kl_error_"), std::string::npos);
  EXPECT_EQ(files.begin()->second.substr(31), "but this\n");
}

TEST(KernelDebug, IsOpenToTheHost) {
  support::Channel channel;
  Kalvo_KernelDebugLog(3, "%s", "logged");
  Kalvo_KernelDebugPrint(4, "%s", "printed");
  EXPECT_EQ(channel.Logged(), std::vector<std::string>{"3 logged"});
  EXPECT_EQ(channel.Printed(), std::vector<std::string>{"4 printed"});
}

}  // namespace
