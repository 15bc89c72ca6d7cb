// survmeth in browsers and node: each declared analysis as a function. docs/web.md explains.
//
//     import { load } from "./survmeth.mjs";
//     const survmeth = await load();
//     const { json } = survmeth.life(bytes, { time: "weeks", event: "relapse" },
//                                    { name: "trial.csv" });

import createCore from "./core.mjs";

/** Data or options that cannot be analysed: the `option` at fault, null where it is none. */
export class RefusedInput extends Error {
  constructor(option, text) {
    // The wording that all faces share names options as a command line has them.
    super(text.replace(/--([a-z][a-z-]*)/g, "$1"));
    this.name = "RefusedInput";
    this.option = option || null;
  }
}

/** The function `tell` has returned false. */
export class Cancelled extends Error {
  constructor() {
    super("cancelled");
    this.name = "Cancelled";
  }
}

/** node's fetch knows no files. */
async function bytesOf(place) {
  if (place.protocol === "file:") return (await import("node:fs/promises")).readFile(place);
  const answer = await fetch(place);
  if (!answer.ok) throw new Error(`${place}: ${answer.status} ${answer.statusText}`);
  return new Uint8Array(await answer.arrayBuffer());
}

/** New data as the core takes them: a text, or null where there are none. */
function textOf(data) {
  return data instanceof Uint8Array ? new TextDecoder().decode(data) : data;
}

class Survmeth {
  #core;

  constructor(core) {
    this.#core = core;
    /** What `survmeth help --json` prints: the analyses and their options. */
    this.declarations = JSON.parse(core.declarations());
    for (const { name } of this.declarations.analyses) {
      this[name] = (data, options, how) => this.run(name, data, options, how);
    }
  }

  /**
   * Runs an analysis and gives an object of the forms that are wanted.
   *
   * data     the bytes of a file (Uint8Array) or its text
   * options  by their names, as a plan has them: { time: "weeks", "event-value": "1" }
   * how      name    what the report calls the data
   *          wanted  the forms: json { figures }, text { width, digits, notes }, html { digits }, csv;
   *                  json alone where it is not said
   *          newdata the bytes or the text of new data, which the option of this name calls by a name
   *          tell    a function that is called with the part of the work that is done, from 0 to 1;
   *                  false ends the work
   *
   * Throws RefusedInput, Cancelled.
   */
  run(name, data, options = {}, { name: source = "data", wanted = { json: {} }, newdata = null, tell = null } = {}) {
    const outcome =
      this.#core.run(name, JSON.stringify(options), source, data, textOf(newdata), wanted, tell);
    if (outcome.refused) throw new RefusedInput(outcome.refused.option, outcome.refused.text);
    if (outcome.cancelled) throw new Cancelled();
    if (outcome.failed) throw new Error(outcome.failed);
    return outcome;
  }
}

/** The module, of the WebAssembly at `place`, a URL or its bytes; else of the file beside this one. */
export async function load(place = new URL("core.wasm", import.meta.url)) {
  const wasmBinary = place instanceof URL ? await bytesOf(place) : place;
  return new Survmeth(await createCore({ wasmBinary }));
}
