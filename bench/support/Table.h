// How the benchmarks measure beside a peer, and the lines they hand to ./dev bench.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quillon::bench {

struct Spread {
  double median = 0;
  double least = 0;
  double most = 0;
};

Spread SpreadOf(std::vector<double> figures);

// One measurement; a side does its work once and returns its figure.
using Side = std::function<double()>;

struct Comparison {
  Spread ours;
  Spread peer;
  Spread ratio;  // ours / peer, of the two figures of each round
};

// Both sides in turn, the other one first in every second round, so that whatever else the machine
// does meets both. A round more than asked for comes first and does not count.
Comparison Compare(int rounds, const Side& ours, const Side& peer);

// Seconds that the work takes.
double Seconds(const std::function<void()>& work);

// A row of the table. `unit` stands behind both figures; `goal` is about the ratio.
void PrintRow(const std::string& name, const std::string& peer, const Comparison& result,
              const std::string& unit, const std::string& goal);
// A row of figures without a peer.
void PrintRow(const std::string& name, const std::string& figure);
// A line below the table.
void PrintNote(const std::string& text);

// A figure with three significant digits, thousands separated.
std::string FigureText(double figure);

}  // namespace quillon::bench
