#ifndef PLC_CLI_STYLE_H
#define PLC_CLI_STYLE_H

#include <QtCore/QString>

namespace plc::cli {

/// What text wants to be seen as.
enum class Emphasis {
    Success,
    Warning,
    Failure,
    Changed, ///< A value that is not what it was.
    Faint,   ///< Of less interest.
    Strong,
    Heading
};

/// Makes text stand out on a terminal and leaves it alone everywhere else.
///
/// A terminal shows colours unless the environment variable NO_COLOR is set and not empty; then,
/// what must be seen is bold or in reverse. Neither is for a terminal that says it is "dumb".
class Style {
public:
    enum Capability { Plain, Monochrome, Coloured };

    explicit Style(Capability capability) : m_capability(capability) {}
    /// As the file with this descriptor allows.
    static Style of(int descriptor);
    static Style ofOutput();
    static Style ofErrors();

    Capability capability() const { return m_capability; }
    /// `text` with the sequences that switch the emphasis on before it and off behind it.
    QString apply(Emphasis emphasis, const QString& text) const;

private:
    Capability m_capability;
};

} // namespace plc::cli

#endif
