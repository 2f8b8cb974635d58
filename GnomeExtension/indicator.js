import Gio from 'gi://Gio';
import St from 'gi://St';
import * as Main from 'resource:///org/gnome/shell/ui/main.js';
import * as PanelMenu from 'resource:///org/gnome/shell/ui/panelMenu.js';
import * as PopupMenu from 'resource:///org/gnome/shell/ui/popupMenu.js';
import {NameOwner} from './nameOwner.js';

/**
 * The program's icon and menu in the top bar, for a desktop where nobody else
 * has a place for it.
 */
export class Indicator {
    /**
     * @param {string} path - the folder of the icons
     * @param {Function} onChosen - called with "active", "settings" or "quit"
     */
    constructor(path, onChosen) {
        this._path = path;
        this._onChosen = onChosen;
        this._wanted = null;
        this._hasOtherHost = true;
        this._button = null;
        this._watch = new NameOwner('org.kde.StatusNotifierWatcher', owner => {
            this._hasOtherHost = owner !== null;
            this._update();
        });
    }

    destroy() {
        this._watch.destroy();
        this.hide();
    }

    /**
     * Shows it as soon as, and as long as, nobody else has a place for icons.
     *
     * @param {boolean} isActive - dimmed and without a check mark when not
     * @param {object} texts - of the entries: "active", "settings", "quit"
     */
    show(isActive, texts) {
        this._wanted = {isActive, texts};
        this._update();
    }

    hide() {
        this._wanted = null;
        this._update();
    }

    _update() {
        this._button?.destroy();
        this._button = null;
        if (this._wanted === null || this._hasOtherHost)
            return;
        const {isActive, texts} = this._wanted;
        this._button = new PanelMenu.Button(0.5, 'Quillmere');
        this._button.add_child(this._icon(isActive));
        const active = this._addEntry('active', texts);
        active.setOrnament(isActive ? PopupMenu.Ornament.CHECK : PopupMenu.Ornament.NONE);
        this._addEntry('settings', texts);
        this._button.menu.addMenuItem(new PopupMenu.PopupSeparatorMenuItem());
        this._addEntry('quit', texts);
        Main.panel.addToStatusArea('quillmere', this._button);
    }

    _icon(isActive) {
        const name = isActive ? 'quillmere-symbolic' : 'quillmere-inactive-symbolic';
        return new St.Icon({
            gicon: Gio.icon_new_for_string(`${this._path}/${name}.svg`),
            style_class: 'system-status-icon',
        });
    }

    _addEntry(what, texts) {
        const entry = new PopupMenu.PopupMenuItem(texts[what] ?? '');
        entry.connect('activate', () => this._onChosen(what));
        this._button.menu.addMenuItem(entry);
        return entry;
    }
}
