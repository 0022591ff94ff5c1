/// @file
/// The exceptions of the hardware-API layer.
#pragma once

#include "GloTypes.h"

#include <cstddef>
#include <exception>
#include <string>
#include <utility>

namespace ps::hwapi::common {

/// A failure with its reason (the kind of failure), its description and the place where it was thrown.
class CHwapiException : public std::exception {
 public:
  CHwapiException(std::string reason, std::string description, std::string file, std::size_t line)
      : m_reason(std::move(reason)), m_description(std::move(description)), m_file(std::move(file)), m_line(line) {}

  /// The reason.
  const char* what() const noexcept override { return m_reason.c_str(); }
  const std::string& getDescription() const { return m_description; }
  /// Source file of the throw site.
  const std::string& getFile() const { return m_file; }
  /// Source line of the throw site.
  std::size_t getLine() const { return m_line; }

 private:
  const std::string m_reason;
  std::string m_description;
  const std::string m_file;
  const std::size_t m_line;
};

/// A message could not be handled: it has no payload, or its answer could not be created.
class MsgHandlingException : public CHwapiException {
 public:
  MsgHandlingException(std::string description, std::string file, std::size_t line)
      : CHwapiException("Message handling error", std::move(description), std::move(file), line) {}
  /// Takes over another failure with its reason and place.
  explicit(false) MsgHandlingException(const CHwapiException& other) : CHwapiException(other) {}

 private:
  std::string m_msgName;
};

/// A driver operation failed.
class OpException : public CHwapiException {
 public:
  OpException(std::string opName, std::string description, const u32& errCode, std::string file, std::size_t line)
      : CHwapiException("Operation failed", std::move(description), std::move(file), line),
        m_opName(std::move(opName)),
        m_errCode(errCode) {}

  const std::string& getOpName() const { return m_opName; }
  /// The driver's error code, in two's complement.
  u32 getErrCode() const { return m_errCode; }

 private:
  std::string m_opName;
  u32 m_errCode;
};

}  // namespace ps::hwapi::common
