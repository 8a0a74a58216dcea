// What people read about an interface: lists of its parameters, one parameter in
// detail, a page of HTML, a fragment for a manual in LaTeX.
//
// In all of it constants appear by their names. The functions answer true, those
// of the pages false when the stream refused bytes.
#pragma once

#include <set>
#include <string>

#include <qxsystem/core/export.h>

namespace QXPlatform {
class qxostream;
}

namespace QXSystem {

class QXInterface;
class QXParameter;
class QXWriter;

/// Lists the parameters up to a visibility, with their briefs, by categories,
/// below the line of the program. Briefs of parameters are broken into lines of
/// at most `width` columns, unless a name or a single word is longer; the lines of
/// the program and the categories are not.
QXSYSTEM_API bool WriteBriefHelpDescription(const QXInterface& interface,
                                            const std::string& program, QXPlatform::qxostream& out,
                                            unsigned level, unsigned width);

/// Writes the line of the program: the name of the interface, or else of the
/// program, and the brief; nothing when there is no brief.
QXSYSTEM_API bool WriteTopLevelBriefDescription(const QXInterface& interface,
                                                const std::string& program,
                                                QXPlatform::qxostream& out);

/// Writes all about one parameter. References in its detail, ":ref:$text$target$",
/// appear as their text.
QXSYSTEM_API bool WriteParameterDetailImpl(const QXParameter& parameter, QXWriter& writer);

/// Writes a page of HTML about all parameters. `name` and `version` are those of
/// the program and may be empty.
///
/// Words that are the name of a parameter or category become links. A name that
/// is used twice is a Warning. Texts are not escaped, so that they may hold HTML;
/// browsers do not follow the link to a name that has a blank in it.
QXSYSTEM_API bool QXWriteHtml(const QXInterface& interface, QXPlatform::qxostream& out,
                              const std::string& name, const std::string& version);

/// Writes one parameter as an item of a description list. Texts are not escaped.
QXSYSTEM_API bool QXWriteParameterLatex(const QXParameter& parameter, QXPlatform::qxostream& out);

/// The names that are links on a page of HTML.
class QXSYSTEM_API HtmlLinks {
public:
  /// False for a name that is there already.
  bool Add(const std::string& name) { return names_.insert(name).second; }

  std::string WriteAnchor(const std::string& name) const;
  std::string WriteLink(const std::string& name) const;

  /// Writes a word, as a link if it is a name.
  bool WriteWord(const std::string& word, QXPlatform::qxostream& out) const;

  /// Writes the words of a line so, a blank behind each, and a line break.
  bool WriteLine(const std::string& line, QXPlatform::qxostream& out) const;

private:
  std::set<std::string> names_;
};

}  // namespace QXSystem
