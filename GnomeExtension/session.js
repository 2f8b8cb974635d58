import GLib from 'gi://GLib';
import {BusObject} from './busObject.js';
import {Indicator} from './indicator.js';
import {identifier, InputSources} from './inputSources.js';
import {nextSource} from './rule.js';
import {Shortcuts} from './shortcuts.js';

/** Everything that the extension does while it is enabled. */
export class Session {
    /** @param {string} path - the extension's folder */
    constructor(path) {
        this._sources = new InputSources(() => this._bus.emit('ListChanged'), () => this._tellCurrent());
        this._shortcuts = new Shortcuts(group => this._press(group));
        this._indicator = new Indicator(path, what =>
            this._bus.emit('IndicatorChose', new GLib.Variant('(s)', [what])));
        this._bus = new BusObject(this._methods(), () => this._leaveNothing());
    }

    destroy() {
        this._bus.destroy();
        this._indicator.destroy();
        this._shortcuts.destroy();
        this._sources.destroy();
    }

    _methods() {
        return {
            List: () => [this._sources.list()],
            Current: () => [this._sources.currentIndex()],
            Activate: async (type, id) => [await this._sources.activate(identifier(type, id))],
            Arm: groups => [this._arm(groups)],
            ShowIndicator: (isShown, isActive, texts) => this._showIndicator(isShown, isActive, texts),
        };
    }

    // The whole table anew; the tokens of the shortcuts that somebody else has.
    _arm(groups) {
        this._shortcuts.release();
        const isRefused = ([token, accelerator, sources]) =>
            !this._shortcuts.grab(accelerator, {token, sources: sources.map(source => identifier(...source))});
        return groups.filter(isRefused).map(([token]) => token);
    }

    // A group without sources is the program's to switch.
    _press(group) {
        if (group.sources.length > 0)
            this._switch(group);
        else
            this._bus.emit('Pressed', new GLib.Variant('(s)', [group.token]));
    }

    // The shell has the new source before the next key is looked at; what is
    // told to the program comes later and holds nothing up.
    async _switch({token, sources}) {
        const index = nextSource(sources, this._sources.current);
        if (index >= 0 && await this._sources.activate(sources[index]))
            this._bus.emit('Switched', new GLib.Variant('(su)', [token, index]));
    }

    _showIndicator(isShown, isActive, texts) {
        if (isShown)
            this._indicator.show(isActive, texts);
        else
            this._indicator.hide();
        return [];
    }

    _tellCurrent() {
        this._bus.emit('CurrentChanged', new GLib.Variant('(u)', [this._sources.currentIndex()]));
    }

    // What the program armed and showed goes with it.
    _leaveNothing() {
        this._shortcuts.release();
        this._indicator.hide();
    }
}
