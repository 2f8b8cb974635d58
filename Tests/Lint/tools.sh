# shellcheck shell=bash
# Finds clang's tools. To be sourced by bash.

# clang_tool <name>: its command, which has the version in its name or not. The
# sources are formatted and analysed by one version: others differ.
clang_tool() {
    local command
    for command in "$1-19" "$1"; do
        if command -v "$command" >/dev/null && "$command" --version | grep -q 'version 19\.'; then
            echo "$command"
            return
        fi
    done
    echo "Version 19 of $1 is needed, and is not installed." >&2
    return 1
}
