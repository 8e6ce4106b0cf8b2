// SPDX-License-Identifier: MIT
// What most tests begin with, for a compiler that parses it once for all of them. Each includes
// what it needs as if there were no such thing.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "tests/support.h"
