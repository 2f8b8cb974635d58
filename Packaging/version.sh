# shellcheck shell=bash
# What a tree says of its version. To be sourced by bash.

# project_version <tree>: from the one place where it stands.
project_version() {
    sed -n 's/^project(Quillmere VERSION \([0-9.]*\).*/\1/p' "$1/CMakeLists.txt"
}

# changes <tree> <title> [<subtitle>]: the items of a section of the change log
# ("1.2", "Unreleased"), one a line, or those below a title within the section.
changes() {
    awk -v title="## $2" -v subtitle="${3:+### $3}" '
        /^## / { isSection = $0 == title; within = ""; next }
        /^### / { within = $0; next }
        isSection && within == subtitle && /^- / { print substr($0, 3) }' "$1/CHANGELOG.md"
}
