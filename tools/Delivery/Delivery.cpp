#include "Delivery/Delivery.h"

#include <iostream>
#include <utility>

#include "Printable.h"

namespace Loggerctl {

Delivery::Delivery(std::string kind, std::string place, std::string command)
    : kind_(std::move(kind)),
      place_(std::move(place)),
      command_(std::move(command)),
      title_("the client") {}

void Delivery::CountDelivered() {
  ++given_;
  isFaultReported_ = false;
}

void Delivery::CountLost() {
  ++given_;
  ++lost_;
}

void Delivery::SetUnconfirmed() {
  lost_ = given_;
  isConfirmed_ = false;
}

void Delivery::ReportFault(const std::string& reason) {
  if (isFaultReported_) return;
  isFaultReported_ = true;
  std::cerr << "loggerctl " << command_ << ": " << title_;
  if (!kind_.empty()) {
    std::cerr << " (" << Escaped(kind_) << (place_.empty() ? "" : ", ") << Escaped(place_) << ")";
  }
  std::cerr << " takes no events: " << reason << "\n";
}

void Delivery::ReportLosses(const std::string& thing) const {
  if (lost_ == 0) return;
  std::cerr << "loggerctl " << command_ << ": " << lost_ << " of " << given_ << " " << thing
            << (given_ == 1 ? "" : "s")
            << (isConfirmed_ ? " did not reach " : " may not have reached ") << title_ << "\n";
}

}  // namespace Loggerctl
