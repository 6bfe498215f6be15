// Command-line arguments of one thal subcommand: positional words and "--name value" options.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace thTool {

// Raised for anything the user got wrong or any file the tool cannot use. main() prints the
// message as one line on standard error and exits with status 1.
class ToolError {
 public:
  std::string message;
  explicit ToolError(std::string text) : message(std::move(text)) {}
};

class Args {
 public:
  std::string command;                         // the subcommand, e.g. "paint"
  std::vector<std::string> positional;         // words that are not options
  std::map<std::string, std::string> options;  // "--item" -> "temperature"; "-o" is stored as "-o"

  // Splits argv[first..argc-1]. Every option takes a value; an option outside `allowed` or an
  // option without its value raises ToolError.
  static Args parse(const std::string& command, int argc, char** argv, int first,
                    const std::set<std::string>& allowed);

  bool has(const std::string& name) const { return options.count(name) > 0; }
  // The option's value; raises ToolError naming the option when it was not given.
  const std::string& required(const std::string& name) const;
  std::string get(const std::string& name, const std::string& fallback) const;
  // Exactly `n` positional words, or ToolError with the usage line.
  void expectPositional(size_t n, const std::string& usage) const;
};

// Number parsing that refuses trailing garbage; `what` names the argument in the message.
int parseInt(const std::string& text, const std::string& what);
double parseDouble(const std::string& text, const std::string& what);
// "X,Y" into two numbers.
void parsePoint(const std::string& text, double& x, double& y);
// "WxH" into two positive sizes.
void parseSize(const std::string& text, int& w, int& h);
// "MIN:MAX" into two numbers with MIN < MAX.
void parseRange(const std::string& text, double& lo, double& hi);

// A number in at most `digits` significant digits, for reports and CSV ("%.*g").
std::string num(double v, int digits = 10);

}  // namespace thTool
