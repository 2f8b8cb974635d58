import GLib from 'gi://GLib';
import Meta from 'gi://Meta';
import {getKeyboardManager} from 'resource:///org/gnome/shell/misc/keyboardManager.js';

// In milliseconds: well under what the program waits for a whole switch.
const LONGEST_WAIT = 300;

/** Knows when the layout that the shell has chosen is the one that keys get. */
export class Keymap {
    constructor() {
        this._waits = new Set();
    }

    destroy() {
        for (const end of [...this._waits])
            end(false);
    }

    /**
     * Resolves to true once the chosen layout is in effect, to false when it
     * does not come to be in time.
     *
     * Until GNOME 48 the shell sets the keymap there and then, or has an X
     * server do it: that one has done so when it answers a later question. From
     * 49 on the shell asks another thread to, which serves in order: a request
     * of our own for the same layout is answered after the shell's. To listen
     * to the signals of a changed keymap instead would not do: there are two of
     * them, one or the other is left out where nothing changes.
     */
    whenInEffect() {
        const layout = getKeyboardManager().currentLayout;
        if (!layout || !global.backend.set_keymap_layout_group_async) {
            if (!Meta.is_wayland_compositor())
                global.get_pointer();
            return Promise.resolve(true);
        }
        return new Promise(resolve => {
            const end = isInEffect => {
                if (!this._waits.delete(end))
                    return;
                GLib.source_remove(timer);
                resolve(isInEffect);
            };
            this._waits.add(end);
            const timer = GLib.timeout_add(GLib.PRIORITY_DEFAULT, LONGEST_WAIT, () => {
                end(false);
                return GLib.SOURCE_REMOVE;
            });
            global.backend.set_keymap_layout_group_async(layout.groupIndex, null)
                .then(() => end(true), () => end(false));
        });
    }
}
