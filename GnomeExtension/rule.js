/**
 * Which of a group's sources comes next: the one after the current source, by
 * its first occurrence, around the end; the first one where the current source
 * is not in the group. An index, -1 for a group with no sources.
 *
 * It must be the program's own rule, word for word: the program shows what
 * comes of it. Both are tried with the same cases (Tests/NextSource.json).
 *
 * @param {string[]} sources - the group's sources in order
 * @param {?string} current - the current source, null for none
 */
export function nextSource(sources, current) {
    if (sources.length === 0)
        return -1;
    return (sources.indexOf(current) + 1) % sources.length;
}
