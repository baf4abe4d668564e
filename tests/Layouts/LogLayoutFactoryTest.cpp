#include "LogLayoutFactory.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "LogLayoutExtended.h"
#include "LogLayoutMessage.h"
#include "LogLayoutSimple.h"
#include "LogLayoutStandard.h"
#include "Logger.h"
#include "Support/Events.h"
#include "Support/Layouts.h"

namespace {

LogLayout* CreateA() {
  return new FunctionLayout([](std::ostream& out, const LogEvent&) { out << "a"; });
}

LogLayout* CreateB() {
  return new FunctionLayout([](std::ostream& out, const LogEvent&) { out << "b"; });
}

std::unique_ptr<LogLayout> Create(LogLayoutFactory& factory, const std::string& name) {
  return std::unique_ptr<LogLayout>(factory.CreateLogLayout(name));
}

/// Makes a layout with the process's own factory.
std::unique_ptr<LogLayout> Create(const std::string& name) {
  return Create(*Logger::GetLogManager()->GetLogLayoutFactory(), name);
}

template <typename Layout>
bool IsA(const std::unique_ptr<LogLayout>& layout) {
  return dynamic_cast<Layout*>(layout.get()) != nullptr;
}

static_assert(std::has_virtual_destructor_v<LogLayoutFactory>);

TEST(LogLayoutFactoryTest, MakesWhatTheFirstCreatorOfTheExactNameMakes) {
  LogLayoutFactory factory;
  for (const char* const name : {"LogLayoutMessage", "LogLayoutStandard", ""}) {
    EXPECT_EQ(nullptr, factory.CreateLogLayout(name)) << name;
  }

  EXPECT_TRUE(factory.RegisterLogLayout("A", CreateA));
  for (const std::string& name :
       {std::string("a"), std::string("A "), std::string("A\0", 2), std::string()}) {
    EXPECT_TRUE(factory.RegisterLogLayout(name, CreateB)) << name;
    EXPECT_EQ("b", Formatted(*Create(factory, name), EventWith("x"))) << name;
  }
  EXPECT_FALSE(factory.RegisterLogLayout("A", CreateB));
  EXPECT_FALSE(factory.RegisterLogLayout("A", CreateA));

  EXPECT_EQ("a", Formatted(*Create(factory, "A"), EventWith("x")));
  EXPECT_EQ(nullptr, factory.CreateLogLayout(" A"));
  EXPECT_NE(Create(factory, "A"), Create(factory, "A"));
}

TEST(LogLayoutFactoryTest, ForgetsAnUnregisteredName) {
  LogLayoutFactory factory;
  factory.RegisterLogLayout("A", CreateA);
  factory.RegisterLogLayout("B", CreateB);

  EXPECT_FALSE(factory.UnregisterLogLayout("a"));
  EXPECT_FALSE(factory.UnregisterLogLayout(""));
  EXPECT_NE(nullptr, Create(factory, "A"));
  EXPECT_TRUE(factory.UnregisterLogLayout("A"));
  EXPECT_FALSE(factory.UnregisterLogLayout("A"));

  EXPECT_EQ(nullptr, factory.CreateLogLayout("A"));
  EXPECT_NE(nullptr, Create(factory, "B"));
  EXPECT_TRUE(factory.RegisterLogLayout("A", CreateB));
  EXPECT_EQ("b", Formatted(*Create(factory, "A"), EventWith("x")));
}

TEST(LogLayoutFactoryTest, LeavesItsLayoutsToTheCaller) {
  static int destroyed = 0;
  std::unique_ptr<LogLayout> layout;

  {
    LogLayoutFactory factory;
    factory.RegisterLogLayout("counted",
                              []() -> LogLayout* { return new CountedLayout(destroyed); });
    layout = Create(factory, "counted");
    factory.UnregisterLogLayout("counted");
  }

  EXPECT_EQ(0, destroyed);
  layout.reset();
  EXPECT_EQ(1, destroyed);
}

TEST(LogLayoutFactoryTest, PassesOnWhatACreatorReturnsOrThrows) {
  LogLayoutFactory factory;
  factory.RegisterLogLayout("none", []() -> LogLayout* { return nullptr; });
  factory.RegisterLogLayout("broken", []() -> LogLayout* { throw std::runtime_error("no"); });

  EXPECT_EQ(nullptr, factory.CreateLogLayout("none"));
  EXPECT_THROW(factory.CreateLogLayout("broken"), std::runtime_error);
}

TEST(LogLayoutFactoryTest, KnowsTheBuiltInLayoutsByTheirExactNames) {
  EXPECT_TRUE(IsA<LogLayoutMessage>(Create("LogLayoutMessage")));
  EXPECT_TRUE(IsA<LogLayoutSimple>(Create("LogLayoutSimple")));
  EXPECT_TRUE(IsA<LogLayoutStandard>(Create("LogLayoutStandard")));
  EXPECT_TRUE(IsA<LogLayoutExtended>(Create("LogLayoutExtended")));
  for (const char* const name : {"logLayoutSimple", "LogLayoutSimple ", "LogLayout", ""}) {
    EXPECT_EQ(nullptr, Create(name)) << name;
  }
}

TEST(LogLayoutFactoryTest, LetsABuiltInLayoutBeReplacedButNotHidden) {
  LogLayoutFactory& factory = *Logger::GetLogManager()->GetLogLayoutFactory();

  EXPECT_FALSE(factory.RegisterLogLayout("LogLayoutExtended", CreateA));
  EXPECT_TRUE(IsA<LogLayoutExtended>(Create("LogLayoutExtended")));
  EXPECT_TRUE(factory.UnregisterLogLayout("LogLayoutExtended"));
  EXPECT_EQ(nullptr, factory.CreateLogLayout("LogLayoutExtended"));
  EXPECT_TRUE(factory.RegisterLogLayout("LogLayoutExtended", CreateA));

  EXPECT_EQ("a", Formatted(*Create("LogLayoutExtended"), EventWith("x")));
}

}  // namespace
