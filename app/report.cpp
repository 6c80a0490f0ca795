#include "app/report.h"

#include <algorithm>
#include <cstdio>

#include "app/terminal.h"

namespace q7z::app
{

namespace
{

/// Builds indented JSON from members in order.
class JsonObject
{
public:
  explicit JsonObject(int depth) : _indent(static_cast<size_t>(depth + 1) * 2, ' '), _close(static_cast<size_t>(depth) * 2, ' ')
  {}

  void Raw(const std::string& name, const std::string& json)
  {
    _text += (_text.empty() ? "{\n" : ",\n") + _indent + QuoteJson(name) + ": " + json;
  }
  void Text(const std::string& name, const std::string& value) { Raw(name, QuoteJson(value)); }
  void Number(const std::string& name, int64_t value) { Raw(name, std::to_string(value)); }

  std::string Close() const { return _text.empty() ? "{}" : _text + "\n" + _close + "}"; }

private:
  std::string _indent;
  std::string _close;
  std::string _text;
};

std::string FormatIssues(const std::vector<Issue>& issues)
{
  if (issues.empty())
    return "[]";
  std::string text = "[\n";
  for (const Issue& issue : issues)
  {
    text += "      {\"code\": " + QuoteJson(issue.code) + ", \"severity\": " + std::to_string(static_cast<int>(issue.severity)) +
            ", \"message\": " + QuoteJson(issue.message) + "}";
    text += &issue == &issues.back() ? "\n" : ",\n";
  }
  return text + "    ]";
}

}  // namespace

int RunReport::CountIssues(Severity severity) const
{
  return static_cast<int>(std::count_if(issues.begin(), issues.end(),
                                        [&](const Issue& issue) { return issue.severity == severity; }));
}

std::string RunReport::ToJson(bool withTimings) const
{
  JsonObject issueObject(1);
  issueObject.Number("numErrors", CountIssues(Severity::kError));
  issueObject.Number("numWarnings", CountIssues(Severity::kWarning));
  issueObject.Number("numInfos", CountIssues(Severity::kInfo));
  issueObject.Raw("messages", FormatIssues(issues));

  JsonObject info(1);
  if (!generator.empty())
    info.Text("generator", generator);
  if (!version.empty())
    info.Text("version", version);
  if (!details.empty())
    info.Raw("details", details);
  for (const auto& [name, count] : counts)
    info.Number(name, count);

  JsonObject root(0);
  root.Text("tool", "q7z");
  root.Text("verb", verb);
  root.Text("uri", uri);
  root.Text("status", status);
  root.Number("exitCode", exitCode);
  root.Raw("issues", issueObject.Close());
  root.Raw("info", info.Close());
  if (withTimings)
  {
    JsonObject times(1);
    for (const auto& [name, milliseconds] : timings)
    {
      char number[32];
      std::snprintf(number, sizeof(number), "%.3f", milliseconds);
      times.Raw(name, number);
    }
    root.Raw("timings", times.Close());
  }
  return root.Close() + "\n";
}

std::string QuoteJson(const std::string& text)
{
  std::string out = "\"";
  for (size_t i = 0; i < text.size();)
  {
    const size_t length = GetUtf8SequenceLength(std::string_view(text).substr(i));
    const char byte = text[i];
    if (length == 0)
      out += "\xEF\xBF\xBD";
    else if (byte == '"' || byte == '\\')
      (out += '\\') += byte;
    else if (static_cast<unsigned char>(byte) < 0x20)
    {
      char escape[7];
      std::snprintf(escape, sizeof(escape), "\\u%04x", static_cast<unsigned char>(byte));
      out += escape;
    }
    else
      out.append(text, i, length);
    i += std::max<size_t>(length, 1);
  }
  return out + "\"";
}

}  // namespace q7z::app
