#!/usr/bin/env bash
# test_installation.sh BEHAVIOUR: one test of the installed driver; `installs` prepares the others.
# tests/package/CMakeLists.txt says what the environment has to give.
set -euo pipefail

installation=$WORK_DIR/moved-here
consumer=$SOURCE_DIR/tests/package/consumer

fail() {
    echo "$*" >&2
    exit 1
}

skip() {
    echo "skipped: $*"
    exit 77
}

# expect_equal WHAT EXPECTED ACTUAL
expect_equal() {
    [ "$2" = "$3" ] || fail "$1: expected '$2', found '$3'"
}

expect_file() {
    [ -s "$installation/$1" ] || fail "$1 is not installed, or empty"
}

# configure_host FOLDER [CMAKE OPTION]…
configure_host() {
    local folder=$WORK_DIR/$1
    shift
    rm -rf "$folder"
    cmake -G Ninja -S "$consumer" -B "$folder" -DCMAKE_PREFIX_PATH="$installation" \
        -DTINY_HOST_DRIVER_QT="$QT_MAJOR" \
        -DCMAKE_BUILD_TYPE="$BUILD_TYPE" -DCMAKE_CXX_COMPILER="$CXX" \
        -DCMAKE_CXX_COMPILER_LAUNCHER="$LAUNCHER" "$@" 2>&1
}

# expect_host_output OUTPUT
expect_host_output() {
    [[ $1 =~ ^"TANK.level 1500, Qt $QT_MAJOR."[0-9.]+$ ]] || fail "the host printed: $1"
}

installs() {
    rm -rf "$WORK_DIR/installed-here" "$installation"
    cmake --install "$BUILD_DIR" --prefix "$WORK_DIR/installed-here" >/dev/null
    mv "$WORK_DIR/installed-here" "$installation"
    ! grep --recursive --fixed-strings --files-with-matches --include='*.cmake' --include='*.pc' \
        --regexp "$BUILD_DIR" --regexp "$SOURCE_DIR" "$installation" ||
        fail "these files name the source or build folder"
}

LibraryCarriesItsVersionAndItsQt() {
    local folder=$installation/$LIBRARY_DIR name=libplc_driver_qt$QT_MAJOR.so
    expect_equal "development link" "$name.$VERSION_MAJOR" "$(readlink "$folder/$name")"
    expect_equal "SONAME link" "$name.$VERSION" "$(readlink "$folder/$name.$VERSION_MAJOR")"
    expect_equal "SONAME" "$name.$VERSION_MAJOR" \
        "$(readelf --dynamic --wide "$folder/$name" |
            sed --quiet 's/.*(SONAME).*\[\(.*\)\]/\1/p')"
    expect_equal "run path" "" \
        "$(readelf --dynamic --wide "$folder/$name" |
            grep --regexp RPATH --regexp RUNPATH || true)"
    cmp "$SOURCE_DIR/driver/plc_driver.h" \
        "$installation/$INCLUDE_DIR/plc_driver_qt$QT_MAJOR/plc_driver.h"
}

LibrariesForSeveralQtsFitIntoOnePrefix() {
    local prefix=$WORK_DIR/library-alone component file
    rm -rf "$prefix"
    for component in runtime development host tcp host_development; do
        cmake --install "$BUILD_DIR" --prefix "$prefix" --component $component >/dev/null
    done
    while read -r file; do
        [[ ${file,,} == *qt$QT_MAJOR* ]] || fail "$file may belong to any Qt"
    done < <(cd "$prefix" && find . ! -type d)
}

# links_of FILE: the targets of its links to other files, without the headings in them
links_of() {
    awk '/^```/ { code = !code } !code' "$1" | tr '\n' ' ' |
        grep --only-matching --perl-regexp '\]\(\K[^)#]+(?=[^)]*\))' |
        grep --invert-match --regexp '^https\?:' || true
}

EveryLinkOfTheDocumentsLeadsSomewhere() {
    local document target links=0
    while read -r document; do
        while read -r target; do
            links=$((links + 1))
            [ -e "$(dirname "$document")/$target" ] ||
                fail "${document#"$installation/"} has a link to $target, which is not installed"
        done < <(links_of "$document")
    done < <(find "$installation" -name '*.md')
    [ "$links" -gt 30 ] || fail "only $links links were found"
}

CMakeHostBuildsAndRuns() {
    configure_host cmake-host
    cmake --build "$WORK_DIR/cmake-host"
    expect_host_output "$("$WORK_DIR/cmake-host/tiny-host")"
}

CMakeHostOfAnotherMajorVersionIsRefused() {
    local output
    output=$(configure_host other-version -DTINY_HOST_DRIVER_VERSION=$((VERSION_MAJOR + 1)).0) &&
        fail "version $((VERSION_MAJOR + 1)) was found where $VERSION is installed"
    [[ $output == *"version: $VERSION"* ]] || fail "$output"
}

CMakeHostOfAnotherQtIsRefused() {
    local other=$((11 - QT_MAJOR)) output
    pkg-config --exists "Qt${other}Core" || skip "Qt $other is not installed"
    output=$(configure_host other-qt -DTINY_HOST_QT_MAJOR="$other") &&
        fail "a host on Qt $other may link a driver built with Qt $QT_MAJOR"
    [[ $output == *"PlcDriverQt$other"*-DPLC_QT_MAJOR=$other* ]] || fail "$output"
}

PkgConfigHostBuildsAndRuns() {
    local folder=$WORK_DIR/pkg-config-host name=plc_driver_qt$QT_MAJOR flags
    rm -rf "$folder"
    mkdir "$folder"
    export PKG_CONFIG_PATH=$installation/$LIBRARY_DIR/pkgconfig
    expect_equal "version" "$VERSION" "$(pkg-config --modversion "$name")"
    expect_equal "Qt" "$QT_MAJOR" "$(pkg-config --variable=qt_major "$name")"
    read -ra flags <<<"$(pkg-config --cflags --libs "$name")"
    # Qt's headers refuse code that is not position independent.
    "$CXX" -Wall -Wextra -Werror -fPIC "$consumer/main.cpp" -o "$folder/tiny-host" "${flags[@]}"
    expect_host_output "$(LD_LIBRARY_PATH=$installation/$LIBRARY_DIR "$folder/tiny-host")"
}

HostLibrariesCarryTheirVersionAndTheirQt() {
    # Their binary interface goes by the minor version.
    local folder=$installation/$LIBRARY_DIR name
    for name in libplc_host_qt$QT_MAJOR libplc_host_tcp_qt$QT_MAJOR; do
        expect_equal "SONAME" "$name.so.${VERSION%.*}" \
            "$(readelf --dynamic --wide "$folder/$name.so" |
                sed --quiet 's/.*(SONAME).*\[\(.*\)\]/\1/p')"
        expect_equal "SONAME link" "$name.so.$VERSION" \
            "$(readlink "$folder/$name.so.${VERSION%.*}")"
        expect_file "$LIBRARY_DIR/$name.a"
    done
}

HostLibrariesExportTheirNamespaceOnly() {
    local name other
    for name in plc_host_qt$QT_MAJOR plc_host_tcp_qt$QT_MAJOR; do
        other=$(nm --dynamic --defined-only --demangle "$installation/$LIBRARY_DIR/lib$name.so" |
            cut --delimiter ' ' --fields 3- |
            grep --invert-match --extended-regexp '^((vtable|typeinfo|typeinfo name|non-virtual thunk|guard variable) (for|to) )?plc::' || true)
        expect_equal "what lib$name.so exports beside plc::" "" "$other"
    done
}

# expect_tank PROGRAM: reads the tank of a simulator, whose level is 1500
expect_tank() {
    local output=$WORK_DIR/tank-simulator port line
    "$installation/bin/plc-simulator" --port 0 "$SOURCE_DIR/docs/examples/tank.json" >"$output" 2>&1 &
    local simulator=$!
    # shellcheck disable=SC2064 # the number that it has now
    trap "kill $simulator 2>/dev/null || true" EXIT
    timeout 60 bash -c "until grep --quiet listening '$output'; do sleep 0.05; done" ||
        fail "the simulator does not listen: $(cat "$output")"
    port=$(sed --quiet 's/^listening on .*:\([0-9]*\)$/\1/p' "$output")
    # It goes on printing until nobody reads it any more, which is no failure.
    line=$({ "$1" "$installation/$LIBRARY_DIR/libplc_driver_qt$QT_MAJOR.so.$VERSION_MAJOR" "$port" ||
        true; } | head --lines 1)
    kill "$simulator"
    trap - EXIT
    expect_equal "first reading" "TANK.level 1500" "$line"
}

ExamplesBuildAgainstTheHostLibrary() {
    local folder=$WORK_DIR/host-examples
    rm -rf "$folder"
    cmake -G Ninja -S "$SOURCE_DIR/tests/package/host_consumer" -B "$folder" \
        -DCMAKE_PREFIX_PATH="$installation" -DEXAMPLES="$SOURCE_DIR/docs/examples" \
        -DDRIVER_QT="$QT_MAJOR" -DCMAKE_BUILD_TYPE="$BUILD_TYPE" \
        -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_COMPILER_LAUNCHER="$LAUNCHER"
    cmake --build "$folder"
    expect_tank "$folder/host_poll"
    expect_tank "$folder/host_poll_static"
}

ExamplesBuildWithPkgConfig() {
    local folder=$WORK_DIR/pkg-config-examples flags
    rm -rf "$folder"
    mkdir "$folder"
    export PKG_CONFIG_PATH=$installation/$LIBRARY_DIR/pkgconfig
    read -ra flags <<<"$(pkg-config --cflags --libs "plc_host_qt$QT_MAJOR")"
    "$CXX" -std=c++17 -fPIC "$SOURCE_DIR/docs/examples/host_poll.cpp" -o "$folder/host_poll" "${flags[@]}"
    read -ra flags <<<"$(pkg-config --cflags --libs "plc_host_tcp_qt$QT_MAJOR")"
    "$CXX" -std=c++17 -fPIC "$SOURCE_DIR/docs/examples/host_qt.cpp" -o "$folder/host_qt" "${flags[@]}"
    export LD_LIBRARY_PATH=$installation/$LIBRARY_DIR
    expect_tank "$folder/host_poll"
}

# The gateway is not part of every build.
installed_tools() {
    echo plc plc-simulator
    [ ! -e "$installation/bin/plc-gateway" ] || echo plc-gateway
}

ToolsComeWithManualCompletionAndDemo() {
    local tool
    for tool in $(installed_tools); do
        expect_equal "$tool --version" "$tool $VERSION" "$("$installation/bin/$tool" --version)"
        expect_file "share/man/man1/$tool.1"
        expect_file "share/bash-completion/completions/$tool"
    done
    expect_file share/plc-driver/demo/plant.json
    expect_file share/plc-driver/wireshark/plc_block.lua
}

# options_in HELP
options_in() { grep --only-matching --regexp ' --[a-z-]*' <<<"$1" | sort --unique; }

# commands_in HELP
commands_in() { sed --quiet 's/^  plc \([a-z]*\) .*/\1/p' <<<"$1"; }

# help_of TOOL: its help, and that of each of its commands.
help_of() {
    local tool=$installation/bin/$1 help name
    help=$("$tool" --help)
    printf '%s\n' "$help"
    for name in $(commands_in "$help"); do
        "$tool" "$name" --help
    done
}

ManualAndCompletionNameAllThatHelpNames() {
    local tool help manual completion name
    for tool in $(installed_tools); do
        help=$(help_of "$tool")
        manual=$(<"$installation/share/man/man1/$tool.1")
        completion=$(<"$installation/share/bash-completion/completions/$tool")
        for name in $(options_in "$help"); do
            [[ $manual =~ (Fl|,)\ -${name#--}[^a-z-] ]] || fail "the manual of $tool lacks $name"
            [[ $completion =~ $name[^a-z-] ]] || fail "the completion of $tool lacks $name"
        done
        for name in $(commands_in "$help"); do
            [[ $manual == *"Cm $name"* ]] || fail "the manual of $tool lacks the command $name"
            [[ $completion =~ commands=\'[^\']*$name ]] ||
                fail "the completion of $tool lacks the command $name"
        done
    done
}

GatewayComesWithItsService() {
    [ -e "$installation/bin/plc-gateway" ] || return 0
    expect_file "lib/systemd/system/plc-gateway@.service"
    local file schema
    for file in gateway tank; do
        schema=$(sed --quiet 's/.*"$schema": "\(.*\)".*/\1/p' "$installation/share/plc-driver/gateway/$file.json")
        expect_file "share/plc-driver/gateway/$schema"
    done
    "$installation/bin/plc-gateway" --check "$installation/share/plc-driver/gateway/gateway.json"
}

ToolsWorkTogether() {
    local project=$installation/share/plc-driver/demo/plant.json output=$WORK_DIR/simulator-output
    "$installation/bin/plc-simulator" --port 0 "$project" >"$output" 2>&1 &
    local simulator=$!
    trap 'kill $simulator 2>/dev/null' RETURN
    timeout 60 bash -c "until grep --quiet listening '$output'; do sleep 0.05; done" ||
        fail "the simulator does not listen: $(cat "$output")"
    local port
    port=$(sed --quiet 's/^listening on .*:\([0-9]*\)$/\1/p' "$output")
    local value label='Plant.pump[1].setpoint'
    "$installation/bin/plc" write --project "$project" --port "$port" "$label=12.5"
    value=$("$installation/bin/plc" read --project "$project" --port "$port" "$label")
    [[ $value == "$label = 12.5"* ]] || fail "12.5 was written, plc read gives: $value"
}

ChangelogBeginsWithTheVersion() {
    local heading
    heading=$(grep '^## ' "$SOURCE_DIR/CHANGELOG.md" | grep --invert-match --line-regexp \
        --max-count=1 '## Unreleased')
    [[ $heading =~ ^"## $VERSION ("[0-9]{4}-[0-9]{2}-[0-9]{2}")"$ ]] ||
        fail "the first release in CHANGELOG.md is '$heading'; expected '## $VERSION (date)'"
}

"$1"
