#!/usr/bin/env bash
# test_check_includes.sh BEHAVIOUR: one test of tools/check_includes, in a small tree of its own.
# SOURCE_DIR is the source tree, WORK_DIR a folder to make the trees in.
set -euo pipefail
unset "${!GIT_@}"

tree=$WORK_DIR/$1

fail() {
    echo "$*" >&2
    exit 1
}

# source_file FILE [LINE]...
source_file() {
    local file=$tree/$1
    shift
    mkdir -p "$(dirname "$file")"
    printf '%s\n' "$@" >"$file"
}

# page [LINE]...: a page with these lines as its table of folders.
page() {
    source_file docs/architecture.md '# Architecture' '' '<!-- folders -->' '```text' "$@" '```' \
        '<!-- end of folders -->'
}

# A program `app` on `wire/frames`, which stands on `values`.
make_tree() {
    rm -rf "$tree"
    source_file values/number.h
    source_file wire/frames/frame.h '#include "values/number.h"' '#include "driver/plc_driver.h"'
    source_file app/main.cpp '#include "wire/frames/frame.h"' '#include <vector>'
    page 'values          :' 'wire/frames     : plc_driver.h values' 'app             : wire/frames'
    mkdir "$tree/tools"
    cp "$SOURCE_DIR/tools/check_includes" "$tree/tools"
    git -C "$tree" init --quiet
}

accepts() {
    "$tree/tools/check_includes" || fail "refused"
}

# refuses COMPLAINT: with a line that is the complaint.
refuses() {
    local output
    ! output=$("$tree/tools/check_includes" 2>&1) || fail "accepted"
    grep --quiet --line-regexp --fixed-strings -- "$1" <<<"$output" ||
        fail "expected '$1', found: $output"
}

AcceptsSourcesThatAreAsThePageTells() {
    accepts
    git -C "$tree" add .
    accepts
}

PrintsTheTableOfTheSources() {
    [ "$(sed --quiet '/ *:/p' "$tree/docs/architecture.md")" = "$("$tree/tools/check_includes" --table)" ] ||
        fail "printed: $("$tree/tools/check_includes" --table)"
}

AcceptsAnyIncludeOfTests() {
    source_file tests/app/main_test.cpp '#include "app/main.h"' '#include "main_fixture.h"'
    accepts
}

AcceptsFoldersOfAFolder() {
    source_file app/plant/tank.cpp '#include "app/plant/tank.h"'
    accepts
}

RefusesAFileBesideTheFoldersOfALayer() {
    source_file wire/shared.h
    refuses 'wire/shared.h stands in no folder that docs/architecture.md names'
}

RefusesAFolderThatThePageDoesNotName() {
    source_file zz/tool.cpp
    refuses 'zz/tool.cpp stands in no folder that docs/architecture.md names'
}

RefusesAFileOutsideOfAllFolders() {
    source_file main.cpp
    refuses 'main.cpp stands in no folder that docs/architecture.md names'
}

RefusesAnIncludeOfAFileBesideTheFoldersOfALayer() {
    source_file values/number.h '#include "wire/shared.h"'
    refuses 'values/number.h includes wire/shared.h, which is in no folder that docs/architecture.md names'
}

RefusesAnIncludeOfAFolderThatThePageDoesNotName() {
    source_file values/number.h '  #  include "zz/tool.h" // once more'
    refuses 'values/number.h includes zz/tool.h, which is in no folder that docs/architecture.md names'
}

RefusesAnIncludeByAnotherPathThanThatFromTheRoot() {
    source_file values/number.h '#include "digits.h"'
    refuses 'values/number.h includes digits.h, which is in no folder that docs/architecture.md names'
}

RefusesAnIncludeOfTests() {
    source_file app/main.cpp '#include "wire/frames/frame.h"' '#include "tests/support/clock.h"'
    refuses 'app/main.cpp includes tests/support/clock.h, which is in no folder that docs/architecture.md names'
}

RefusesAnIncludeOfWhatStandsBelowInTheTable() {
    source_file values/number.h '#include "app/options.h"'
    page 'values          : app' 'wire/frames     : plc_driver.h values' 'app             : wire/frames'
    refuses 'values/number.h includes app/options.h: docs/architecture.md has app below values'
}

RefusesSuchAnIncludeInAngleBracketsToo() {
    source_file app/options.h
    source_file values/number.h '#include <app/options.h>'
    refuses 'values/number.h includes app/options.h: docs/architecture.md has app below values'
}

RefusesSuchAnIncludeInSourcesThatTheBuildCompletes() {
    source_file values/version.cpp.in '#include "app/options.h"'
    refuses 'values/version.cpp.in includes app/options.h: docs/architecture.md has app below values'
}

RefusesAnIncludeThatThePageDoesNotTell() {
    source_file app/main.cpp '#include "wire/frames/frame.h"' '#include "values/number.h"'
    refuses '+app             : values wire/frames'
}

RefusesAPageThatTellsOfAnIncludeTooMany() {
    page 'values          :' 'wire/frames     : plc_driver.h values' 'app             : values wire/frames'
    refuses '-app             : values wire/frames'
}

RefusesAPageThatNamesAFolderWithoutSources() {
    page 'values          :' 'old             :' 'wire/frames     : plc_driver.h values' \
        'app             : wire/frames'
    refuses 'docs/architecture.md names old, which has no sources'
}

RefusesAPageWithoutATable() {
    page
    refuses 'docs/architecture.md has no table of folders'
}

make_tree
"$1"
