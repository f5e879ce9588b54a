#!/usr/bin/env node
// The program as it is on a command line: it reads and writes the files by itself.
// @ts-expect-error it is built, not written
import "../engine/trellion-cli.cjs";
