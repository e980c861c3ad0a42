// What many end-to-end tests need alike.
#pragma once

#include <gtest/gtest.h>

#include <map>

#include "support/simulation.h"

// A simulated device as a [[device]] table, with the lines given.
std::string OneDevice(uint32_t capabilities, const std::string& more = "");

// The hexadecimal digits in which the journal and the configuration have a number of that many
// bytes.
std::string Hex(uint64_t number, int bytes);

// What the last call of CorvaneAPI<function> took or gave, from its record on.
std::string Sent(const Simulation& simulation, const std::string& function);
