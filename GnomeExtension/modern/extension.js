import {Extension} from 'resource:///org/gnome/shell/extensions/extension.js';
import {Session} from './session.js';

/** What the shell loads, from GNOME 45 on. */
export default class QuillmereExtension extends Extension {
    enable() {
        this._session = new Session(this.path);
    }

    // In the lock screen as well, where nothing of it is wanted.
    disable() {
        this._session.destroy();
        this._session = null;
    }
}
