#ifndef PLC_CLI_SYMBOL_TREE_TEXT_H
#define PLC_CLI_SYMBOL_TREE_TEXT_H

#include "project/project.h"

namespace plc::cli {

/// `plc symbols --tree`: prints scopes, structures and members with `pattern` in their labels, to
/// the level `depth`; 0: all.
void printTree(const project::Project& project, const QString& pattern, int depth, bool json);

} // namespace plc::cli

#endif
