/// @file
/// A board with fans on a made-up chip of the kernel.
#pragma once

#include "TestBoard.h"

#include <fstream>
#include <string>

/// A board whose fans 0 and 1 are fan1 and fan2 of the chip "emc2305" at 3-002c, bound as hwmon2.
class FanBoard {
 public:
  FanBoard() {
    Bind(2);
    Describe();
  }

  /// Binds the chip under a number, with what it shows before anybody changes it.
  void Bind(int number, const std::string& chip = "emc2305") {
    m_number = number;
    m_board.BindChip(number, chip, "3-002c");
    Show("fan1_input", "6000");
    Show("pwm1", "80");
    Show("pwm1_enable", "2");
    Show("pwm1_freq", "25000");
    Show("fan2_input", "6100");
    Show("pwm2", "90");
    Show("pwm2_enable", "3");
    Show("pwm2_freq", "5000");
  }
  void Unbind() { m_board.UnbindChip(m_number); }

  /// Describes both fans; @p more are further keys of the tables.
  void Describe(const std::string& more = "", const std::string& chip = "emc2305") {
    m_board.Describe("[[fan]]\nid = 0\nhwmon = { chip = '" + chip + "', at = '3-002c', fan = 'fan1', pwm = 'pwm1' }\n" +
                     more + "\n[[fan]]\nid = 1\nhwmon = { chip = '" + chip + "', fan = 'fan2', pwm = 'pwm2' }\n" +
                     more + '\n');
  }

  void Show(const std::string& attribute, const std::string& text) { m_board.Show(m_number, attribute, text); }
  /// @return what an attribute shows in its first line; "none" when there is no such attribute
  std::string Shown(const std::string& attribute) const {
    std::ifstream file(Path(attribute));
    std::string line = "none";
    std::getline(file, line);
    return line;
  }
  void Remove(const std::string& attribute) const { std::filesystem::remove(Path(attribute)); }
  std::filesystem::path Path(const std::string& attribute) const { return m_board.Hwmon(m_number) / attribute; }
  const TestBoard& Board() const { return m_board; }

 private:
  TestBoard m_board;
  int m_number = 0;
};
