// Makes calls of the module: a JSON array of {analysis, options, file, name, wanted} on standard
// input, an array of what each gives on standard output.
//
//     node run.mjs FOLDER    (that holds survmeth.mjs)

import { readFileSync } from "node:fs";
import { resolve } from "node:path";
import { pathToFileURL } from "node:url";

const { load, RefusedInput } = await import(pathToFileURL(resolve(process.argv[2], "survmeth.mjs")));
const survmeth = await load();

function outcome({ analysis, options, file, newdata, name, wanted }) {
  try {
    return survmeth[analysis](readFileSync(file), options,
      { name, wanted, newdata: newdata ? readFileSync(newdata) : null });
  } catch (refused) {
    if (!(refused instanceof RefusedInput)) throw refused;
    return { refused: refused.message, option: refused.option };
  }
}

const calls = JSON.parse(readFileSync(0, "utf-8"));
process.stdout.write(calls.length ? JSON.stringify(calls.map(outcome))
                                  : JSON.stringify(survmeth.declarations));
