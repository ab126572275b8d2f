// duckdb_tasks.js THREADS TASK FOLDER RESULT; 0 threads: as many as there are processors. Every cell is read as text.
const { DuckDBInstance } = require("@duckdb/node-api");

const [threads, task, folder, result] = process.argv.slice(2);
const literal = (text) => `'${text.replaceAll("'", "''")}'`;
const table = (name) => `read_csv(${literal(`${folder}/${name}.csv`)}, header = true, all_varchar = true)`;
const names = ["order_id", "customer_id", "order_date", "due_date", "country", "city", "product", "quantity", "unit_price",
  "discount", "status", "note", "email"];
const json = `read_json(${literal(`${folder}/orders.json`)}, columns = {${names.map((name) => `${name}: 'VARCHAR'`)}})`;

const orders = table("orders");
const both = `${orders} AS orders JOIN ${table("customers")} AS customers USING (customer_id)`;
const matching = "WHERE CAST(quantity AS INTEGER) > 10 AND status = 'shipped'";
const ordered = "ORDER BY country, CAST(unit_price AS DOUBLE) DESC";
const select = {
  copy: orders,
  filter: `${orders} ${matching}`,
  sort: `${orders} ${ordered}`,
  join: both,
  chain: `${both} ${matching} ${ordered}`,
  "to-json": orders,
  "from-json": json,
}[task];
const format = task === "to-json" ? "json, ARRAY true" : "csv, HEADER true";

DuckDBInstance.create(":memory:", threads === "0" ? {} : { threads })
  .then((database) => database.connect())
  .then((connection) => connection.run(`COPY (SELECT * FROM ${select}) TO ${literal(result)} (FORMAT ${format})`))
  .catch((error) => {
    console.error(error.message);
    process.exitCode = 1;
  });
