import Gio from 'gi://Gio';
import GLib from 'gi://GLib';
import {NameOwner} from './nameOwner.js';

const NAME = 'org.quillmere.GnomeExtension';
const PATH = '/org/quillmere/GnomeExtension';
const INTERFACE = 'org.quillmere.GnomeExtension1';
const PROGRAM = 'org.quillmere.Quillmere';
const VERSION = 1;

// What each method does stands with its implementation, in session.js.
const DESCRIPTION = `<node>
  <interface name="${INTERFACE}">
    <property name="Version" type="u" access="read"/>
    <method name="List"><arg type="a(ssss)" direction="out"/></method>
    <method name="Current"><arg type="u" direction="out"/></method>
    <method name="Activate">
      <arg type="s" direction="in"/>
      <arg type="s" direction="in"/>
      <arg type="b" direction="out"/>
    </method>
    <method name="Arm">
      <arg type="a(ssa(ss))" direction="in"/>
      <arg type="as" direction="out"/>
    </method>
    <method name="ShowIndicator">
      <arg type="b" direction="in"/>
      <arg type="b" direction="in"/>
      <arg type="a{ss}" direction="in"/>
    </method>
    <signal name="ListChanged"/>
    <signal name="CurrentChanged"><arg type="u"/></signal>
    <signal name="Switched"><arg type="s"/><arg type="u"/></signal>
    <signal name="Pressed"><arg type="s"/></signal>
    <signal name="IndicatorChose"><arg type="s"/></signal>
  </interface>
</node>`;

/**
 * The extension on the session bus. It answers the program and nobody else, and
 * nobody else hears of its signals.
 */
export class BusObject {
    /**
     * @param {object} methods - by name, from the call's arguments to the list of results or a promise of it
     * @param {Function} onProgramGone - called when the program leaves the bus
     */
    constructor(methods, onProgramGone) {
        this._program = null;
        this._object = Gio.DBusExportedObject.wrapJSObject(DESCRIPTION, this._implementation(methods));
        this._object.export(Gio.DBus.session, PATH);
        this._owning = 0;
        this._watch = new NameOwner(PROGRAM, owner => {
            this._program = owner;
            if (owner === null)
                onProgramGone();
            // Only now, so that whoever finds the extension is known to it.
            this._owning ||= Gio.DBus.session.own_name(NAME, Gio.BusNameOwnerFlags.NONE, null, null);
        });
    }

    destroy() {
        this._program = null;
        this._watch.destroy();
        if (this._owning)
            Gio.DBus.session.unown_name(this._owning);
        this._object.unexport();
    }

    /** Tells the program, if it is there. */
    emit(name, parameters = null) {
        if (this._program !== null)
            Gio.DBus.session.emit_signal(this._program, PATH, INTERFACE, name, parameters);
    }

    _implementation(methods) {
        const implementation = {Version: VERSION};
        for (const [name, method] of Object.entries(methods)) {
            implementation[`${name}Async`] = (parameters, invocation) =>
                this._answer(method, parameters, invocation);
        }
        return implementation;
    }

    async _answer(method, parameters, invocation) {
        if (invocation.get_sender() !== this._program) {
            invocation.return_dbus_error('org.freedesktop.DBus.Error.AccessDenied', `This is for ${PROGRAM} alone.`);
            return;
        }
        try {
            const results = await method(...parameters);
            const types = invocation.get_method_info().out_args.map(argument => argument.signature);
            invocation.return_value(new GLib.Variant(`(${types.join('')})`, results));
        } catch (error) {
            logError(error);
            invocation.return_dbus_error('org.freedesktop.DBus.Error.Failed', error.message);
        }
    }
}
