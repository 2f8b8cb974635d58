import {getIBusManager} from 'resource:///org/gnome/shell/misc/ibusManager.js';
import {getXkbInfo} from 'resource:///org/gnome/shell/misc/keyboardManager.js';
import {getInputSourceManager} from 'resource:///org/gnome/shell/ui/status/keyboard.js';
import {Keymap} from './keymap.js';

// What stands for no source, where an index is asked.
const NONE = 0xffffffff;

/** The text by which a source is told from others: "xkb:us", "ibus:libpinyin". */
export function identifier(type, id) {
    return `${type}:${id}`;
}

function identifierOf(source) {
    return identifier(source.type, source.id);
}

function languageOf(source) {
    if (source.type === 'ibus')
        return getIBusManager().getEngineDesc(source.id)?.get_language() ?? '';
    return getXkbInfo().get_languages_for_layout(source.id)[0] ?? '';
}

/** The person's input sources, as the shell has them. */
export class InputSources {
    /**
     * @param {Function} onListChanged - called when sources come, go or move
     * @param {Function} onCurrentChanged - called when another one is current
     */
    constructor(onListChanged, onCurrentChanged) {
        this._keymap = new Keymap();
        this._manager = getInputSourceManager();
        this._connections = [
            this._manager.connect('sources-changed', () => onListChanged()),
            this._manager.connect('current-source-changed', () => onCurrentChanged()),
        ];
    }

    destroy() {
        this._connections.forEach(connection => this._manager.disconnect(connection));
        this._keymap.destroy();
    }

    /** Each source's type, identifier within it, name and language. */
    list() {
        return this._sources().map(source => [source.type, source.id, source.displayName, languageOf(source)]);
    }

    /** Where the current source is in the list. */
    currentIndex() {
        const index = this._sources().indexOf(this._manager.currentSource);
        return index < 0 ? NONE : index;
    }

    /** The current source's identifier; null for none. */
    get current() {
        const source = this._manager.currentSource;
        return source ? identifierOf(source) : null;
    }

    /**
     * Makes a source current. The shell has done so when this returns; the
     * promise is true once the keys are in the new layout, and false when they
     * do not come to be, or there is no such source.
     */
    activate(wanted) {
        const source = this._sources().find(each => identifierOf(each) === wanted);
        if (!source)
            return Promise.resolve(false);
        source.activate(true);
        return this._keymap.whenInEffect();
    }

    // The shell keeps them by their place in the person's list, where those that
    // it does not know leave gaps. Numbers come out of an object in order.
    _sources() {
        return Object.values(this._manager.inputSources);
    }
}
