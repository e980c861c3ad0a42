// What many end-to-end tests expect alike.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <map>

#include "support/simulation.h"

// A simulated device as a [[device]] table, with the lines given.
std::string OneDevice(uint32_t capabilities, const std::string& more = "");

// A number in so many bytes, as the hexadecimal digits in which the journal and the configuration
// have records.
std::string Hex(uint64_t number, int bytes);

// A record whose fields are all out of line, but for the bytes that stand at the offsets.
std::string Sevens(size_t size, const std::map<size_t, std::string>& changes = {});

// What the last call of CorvaneAPI<function> took or gave, from its record on.
std::string Sent(const Simulation& simulation, const std::string& function);

// The functions between selection and closing, without the prefix CorvaneAPI, a blank behind each.
std::string Work(const Simulation& simulation);

// Expects the run to select a device, print the text after that and end with the status.
void ExpectRun(const Simulation& simulation, const std::string& words, const std::string& out,
               int status = 0);

// A command, the CorvaneAPI function that fails in it, what is printed then.
struct Failure {
  const char* words;
  std::string function;
  const char* out;
};

// Expects the function's status to be passed through and only closing to follow; and without the
// device (a [[device]] table), no work at all.
void ExpectFailures(const std::string& device, std::initializer_list<Failure> failures);
