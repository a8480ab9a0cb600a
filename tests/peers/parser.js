// Answers how busboy read a form, its parts in order. The argument is the socket to listen on.
const busboy = require("busboy");
const http = require("http");

http.createServer((request, response) => {
    const parts = [];
    const finish = (status, answer) => {
        response.writeHead(status, { "Content-Type": "application/json" });
        response.end(JSON.stringify(answer));
    };
    // Its defaults are Latin-1 and short fields.
    const parser = busboy({
        headers: request.headers,
        defParamCharset: "utf8",
        preservePath: true,
        limits: { fieldSize: 64 * 1024 * 1024, fieldNameSize: 1024 },
    });
    parser.on("field", (name, value) => {
        parts.push({ name, value: Buffer.from(value).toString("base64") });
    });
    parser.on("file", (name, stream, info) => {
        const part = { name, fileName: info.filename ?? null };
        const chunks = [];
        parts.push(part);
        stream.on("data", (chunk) => chunks.push(chunk));
        stream.on("end", () => { part.value = Buffer.concat(chunks).toString("base64"); });
    });
    parser.on("error", (error) => finish(400, { error: error.message }));
    parser.on("close", () => finish(200, { parts }));
    request.pipe(parser);
}).listen(process.argv[2]);
