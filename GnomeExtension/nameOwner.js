import Gio from 'gi://Gio';

/** Follows who has a name on the session bus. */
export class NameOwner {
    /** @param {Function} onChanged - called with the owner's unique name, null for nobody; at first, too */
    constructor(name, onChanged) {
        this._watch = Gio.DBus.session.watch_name(name, Gio.BusNameWatcherFlags.NONE,
            (_connection, _name, owner) => onChanged(owner), () => onChanged(null));
    }

    destroy() {
        Gio.DBus.session.unwatch_name(this._watch);
    }
}
