#ifndef PLC_OPTIONS_DOCUMENT_H
#define PLC_OPTIONS_DOCUMENT_H

#include <QtCore/QMap>

#include "options/option.h"
#include "values/expected.h"

namespace plc::options {

/// The texts that stand for "@NAME@" in a template, each on a line of its own.
using Sections = QMap<QString, QString>;

/// `text` with each line that is only "@NAME@" replaced by that section. Every section must be
/// used, and every such line must name one.
Expected<QString> filledTemplate(const QString& text, const Sections& sections);

/// The main function of a program that is called with a kind of document and the paths of a
/// template and of the file to be made of it. Returns its exit code.
int writeDocument(int argc, char** argv, const QMap<QString, Sections>& kinds);

/// The same for a program with one table of options, whose manual and completion have nothing else
/// that is made. `commands` are its words that are no options.
int writeDocumentsOf(int argc, char** argv, const Table& table, const QStringList& commands);

} // namespace plc::options

#endif
