# Offers the extension for GNOME Shell. To be sourced by bash.

# offer_gnome_extension <program>: on a GNOME desktop whose user has not got the
# extension yet. The program is quillmere-gnome-extension.
offer_gnome_extension() {
    local answer=
    case $("$1" state 2>/dev/null) in
        absent) echo "GNOME can catch Quillmere's shortcuts and switch by itself, with an extension in your own folder." ;;
        other) echo "Quillmere's extension for GNOME is of another version than this program." ;;
        *) return 0 ;;
    esac
    # Without a terminal there is nobody to ask.
    if [ -t 0 ]; then read -r -p "Add it? [y/N] " answer; fi
    case $answer in
        [yY]*)
            if "$1" add; then
                echo "Added: log out and in once. To take it back: $1 remove"
            else
                echo "It could not be added."
            fi
            ;;
        *) echo "It is not added. To do so later: $1 add" ;;
    esac
}
