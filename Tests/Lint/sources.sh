# Lists the project's C++ files, one a line. To be sourced by bash in the
# repository's root.

# The files whose name ends in one of the given endings.
sources() {
    local folder endings=()
    for ending in "$@"; do endings+=(-o -name "*.$ending"); done
    for folder in QuillmereCore Quillmere TapService Tests Benchmarks Fuzz Packaging; do
        if [ -d "$folder" ]; then find "$folder" -type f \( "${endings[@]:1}" \); fi
    done | LC_ALL=C sort
}
