import Meta from 'gi://Meta';
import Shell from 'gi://Shell';
import * as Main from 'resource:///org/gnome/shell/ui/main.js';

// Wherever a person types, but for the lock screen and the login.
const MODES = Shell.ActionMode.NORMAL | Shell.ActionMode.OVERVIEW | Shell.ActionMode.POPUP |
    Shell.ActionMode.SYSTEM_MODAL | Shell.ActionMode.LOOKING_GLASS;

/** Key combinations that no application gets to see. */
export class Shortcuts {
    /** @param {Function} onPressed - called with the value that came with the combination, once a press */
    constructor(onPressed) {
        this._values = new Map();
        this._connection = global.display.connect('accelerator-activated', (_display, action) => {
            if (this._values.has(action))
                onPressed(this._values.get(action));
        });
    }

    destroy() {
        this.release();
        global.display.disconnect(this._connection);
    }

    /**
     * Takes a combination, unless the shell or somebody else has it already.
     *
     * @param {string} accelerator - as "<Control><Alt>space"
     * @param {*} value - what `onPressed` is called with
     * @returns {boolean} whether it could be had
     */
    grab(accelerator, value) {
        // A held key switches once: its repeats are swallowed, too.
        const action = global.display.grab_accelerator(accelerator, Meta.KeyBindingFlags.IGNORE_AUTOREPEAT);
        if (action === Meta.KeyBindingAction.NONE)
            return false;
        Main.wm.allowKeybinding(Meta.external_binding_name_for_action(action), MODES);
        this._values.set(action, value);
        return true;
    }

    /** Gives every combination back. */
    release() {
        for (const action of this._values.keys())
            global.display.ungrab_accelerator(action);
        this._values.clear();
    }
}
