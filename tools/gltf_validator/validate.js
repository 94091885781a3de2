// Validates binary glTF files, given by name, with the pictures beside them. Prints the errors; the exit code is 1 if
// there is any. With --warnings it prints warnings too, which do not count.
'use strict';

const fs = require('fs');
const path = require('path');
const validator = require(require.resolve('gltf-validator', { paths: [process.env.GLTF_VALIDATOR_FOLDER] }));

async function validate(file, withWarnings) {
    const beside = (uri) => fs.promises.readFile(path.join(path.dirname(file), decodeURIComponent(uri)));
    const report = await validator.validateBytes(new Uint8Array(fs.readFileSync(file)), {
        uri: path.basename(file),
        maxIssues: 0,
        externalResourceFunction: async (uri) => new Uint8Array(await beside(uri)),
    });
    for (const message of report.issues.messages)
        if (message.severity === 0 || (withWarnings && message.severity === 1))
            console.log(`${file}: ${message.severity ? 'warning' : 'error'} ${message.code} at ${message.pointer}: ` +
                        message.message);
    return report.issues.numErrors;
}

async function main() {
    const files = process.argv.slice(2).filter((argument) => argument !== '--warnings');
    let errors = 0;
    for (const file of files)
        errors += await validate(file, process.argv.includes('--warnings'));
    console.log(`${files.length} files, ${errors} errors`);
    process.exitCode = errors > 0 || files.length === 0 ? 1 : 0;
}

main().catch((fault) => {
    console.error(String(fault));
    process.exitCode = 1;
});
