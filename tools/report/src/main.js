// Reads the data of the page and draws the report that they are of.
import { classesPage } from "./classes_page.js";
import { followAddress } from "./frame.js";
import { matchPage } from "./match_page.js";

const data = JSON.parse(document.getElementById("data").textContent);
const page = data.kind === "match" ? matchPage(data) : classesPage(data);
document.getElementById("page").replaceChildren(...page);
queueMicrotask(followAddress);
