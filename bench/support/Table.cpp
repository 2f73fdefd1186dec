#include "bench/support/Table.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace quillon::bench {

namespace {

std::string SpreadText(const Spread& spread, const std::string& unit) {
  return FigureText(spread.median) + unit + " (" + FigureText(spread.least) + "-" +
         FigureText(spread.most) + ")";
}

std::string Fixed(double figure, int decimals) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.*f", decimals, figure);
  return text.data();
}

void PrintColumns(const std::vector<std::string>& columns) {
  for (const auto& column : columns) {
    std::fputs(column.c_str(), stdout);
    std::fputc(&column == &columns.back() ? '\n' : '\t', stdout);
  }
  std::fflush(stdout);
}

}  // namespace

Spread SpreadOf(std::vector<double> figures) {
  std::sort(figures.begin(), figures.end());
  const auto middle = figures.size() / 2;
  const double median =
      figures.size() % 2 != 0 ? figures[middle] : (figures[middle - 1] + figures[middle]) / 2;
  return {median, figures.front(), figures.back()};
}

Comparison Compare(int rounds, const Side& ours, const Side& peer) {
  std::vector<double> mine;
  std::vector<double> theirs;
  std::vector<double> ratios;
  for (int round = 0; round <= rounds; ++round) {
    const bool peerFirst = round % 2 != 0;
    double peerFigure = peerFirst ? peer() : 0;
    const double ourFigure = ours();
    if (!peerFirst) peerFigure = peer();
    if (round == 0) continue;
    mine.push_back(ourFigure);
    theirs.push_back(peerFigure);
    ratios.push_back(ourFigure / peerFigure);
  }
  return {SpreadOf(mine), SpreadOf(theirs), SpreadOf(ratios)};
}

double Seconds(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::string FigureText(double figure) {
  const double size = std::abs(figure);
  const auto plain = Fixed(figure, size >= 100 ? 0 : size >= 10 ? 1 : size >= 1 ? 2 : 3);
  const auto whole = std::min(plain.find('.'), plain.size());
  std::string text;
  for (std::size_t at = 0; at < plain.size(); ++at) {
    if (at > 0 && at < whole && (whole - at) % 3 == 0) text.push_back(',');
    text.push_back(plain[at]);
  }
  return text;
}

void PrintRow(const std::string& name, const std::string& peer, const Comparison& result,
              const std::string& unit, const std::string& goal) {
  const auto& ratio = result.ratio;
  PrintColumns(
      {"row", name, SpreadText(result.ours, unit), peer + " " + SpreadText(result.peer, unit),
       Fixed(ratio.median, 2) + " (" + Fixed(ratio.least, 2) + "-" + Fixed(ratio.most, 2) + ")",
       goal});
}

void PrintRow(const std::string& name, const std::string& figure) {
  PrintColumns({"row", name, figure, "", "", ""});
}

void PrintNote(const std::string& text) {
  PrintColumns({"note", text});
}

}  // namespace quillon::bench
