// Tries the extension's rule of the next source, in both forms that are packed,
// with the cases that the program's own is tried with.
//
//     gjs nextSource.js FOLDER-OF-BOTH-FORMS CASES

const {Gio} = imports.gi;
const System = imports.system;

function failures(nextSource, cases) {
    return cases.filter(({sources, current, next}) => (sources[nextSource(sources, current)] ?? null) !== next);
}

async function main([folder, casesPath]) {
    const [, text] = Gio.File.new_for_path(casesPath).load_contents(null);
    const cases = JSON.parse(new TextDecoder().decode(text));
    imports.searchPath.unshift(`${folder}/legacy`);
    const rules = {
        legacy: imports.rule.nextSource,
        modern: (await import(`file://${folder}/modern/rule.js`)).nextSource,
    };
    let failed = cases.length === 0;
    for (const [form, nextSource] of Object.entries(rules)) {
        for (const {name} of failures(nextSource, cases)) {
            print(`${form}: ${name}`);
            failed = true;
        }
    }
    return failed ? 1 : 0;
}

const loop = imports.mainloop;
let status = 1;
main(ARGV)
    .then(result => (status = result), error => printerr(`${error}\n${error.stack}`))
    .then(() => loop.quit('main'));
loop.run('main');
System.exit(status);
