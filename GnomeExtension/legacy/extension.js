/* exported init */
const {Session} = imports.misc.extensionUtils.getCurrentExtension().imports.session;

/** What the shell loads, until GNOME 44. */
class QuillmereExtension {
    constructor(path) {
        this._path = path;
    }

    enable() {
        this._session = new Session(this._path);
    }

    // In the lock screen as well, where nothing of it is wanted.
    disable() {
        this._session.destroy();
        this._session = null;
    }
}

function init({path}) {
    return new QuillmereExtension(path);
}
