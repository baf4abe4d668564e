#pragma once

#include <string>
#include <vector>

namespace Loggerctl {

/// The events that one client of a configuration was given, and those that it lost.
class Delivery {
 public:
  /// `place` is its file, or the host and port of its server; empty for other kinds. `command`
  /// begins what is printed.
  Delivery(std::string kind, std::string place, std::string command);

  const std::string& Kind() const { return kind_; }
  const std::string& Place() const { return place_; }
  /// The client's name in messages ("client 'f'"). Without one only the kind is printed.
  void SetTitle(const std::string& title) { title_ = title; }

  void CountDelivered();
  void CountLost();
  /// Corrects the number of lost events.
  void SetLost(unsigned long lost) { lost_ = lost; }
  /// All of the events may be lost.
  void SetUnconfirmed();
  unsigned long Given() const { return given_; }
  unsigned long Lost() const { return lost_; }

  /// Prints on standard error why the client takes no events, unless it was printed since the last
  /// event that was delivered.
  void ReportFault(const std::string& reason);
  bool IsFaultReported() const { return isFaultReported_; }
  /// Prints on standard error how many events were lost: "2 of 3 lines did not reach client 'f'",
  /// if `thing` is "line".
  void ReportLosses(const std::string& thing) const;

 private:
  const std::string kind_;
  const std::string place_;
  const std::string command_;
  std::string title_;
  unsigned long given_ = 0;
  unsigned long lost_ = 0;
  bool isConfirmed_ = true;
  bool isFaultReported_ = false;
};

}  // namespace Loggerctl
