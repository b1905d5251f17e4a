// A script's conversation: what is said, what is heard, where that leads and what ends it.
import { keywordsOf, readable, type Outline, type Statement } from "../listing/outline";

export interface Said {
  readonly text: string;
  readonly kind: "said" | "look" | "table" | "input" | "action";
}

export interface Offer {
  readonly word: string;
  readonly isAnswered: boolean;
}

// What happens in one go, once it has begun.
export interface Card {
  readonly id: number;
  readonly line: number; // of the listing
  readonly keywords: readonly string[]; // that lead here, where it is an answer
  readonly hidden: readonly string[]; // those of them that an earlier answer takes
  readonly said: Said[];
  readonly offers: Offer[];
  asks: boolean;
  end: string | null; // the statement that ends the conversation here
}

export interface Arrow {
  readonly from: Card;
  readonly to: Card;
  readonly condition: string;
  readonly isBack: boolean; // to a card that stands before it in the script
}

export interface Conversation {
  readonly cards: readonly Card[];
  readonly arrows: readonly Arrow[];
}

// A way out of a card that leads nowhere yet.
interface Exit {
  readonly from: Card;
  readonly conditions: readonly string[];
}

const inputs = new Map([
  ["input", "a number is asked for"],
  ["inputnum", "a number is asked for"],
  ["inputstr", "a word is asked for"],
]);

// Statements that are not worth a word in the picture.
const silent = new Set([
  "decl",
  "portrait",
  "sprefix",
  "sconverse",
  "answer",
  "endif",
  "endanswer",
  "enddata",
  "$var",
  "$str",
  "data",
]);

export function conversationOf(outline: Outline): Conversation {
  return new Builder(outline).build();
}

class Builder {
  private readonly cards: Card[] = [];
  private readonly arrows: Arrow[] = [];
  private readonly targets = new Map<string, Card>();
  private readonly aliases = new Map<string, string>(); // labels of jumps, by where these lead
  private readonly jumps: { exit: Exit; label: string }[] = [];
  private readonly heard = new Set<string>();
  private labels: string[] = [];
  private current: Card | null = null;
  private exits: Exit[] = [];

  constructor(private readonly outline: Outline) {}

  build(): Conversation {
    this.collectKeywords(this.outline.statements);
    this.walk(this.outline.statements);
    for (const { exit, label } of this.jumps) {
      const to = this.target(label);
      if (to) this.connect(exit, to);
    }
    return { cards: this.cards, arrows: this.arrows };
  }

  private collectKeywords(statements: readonly Statement[]): void {
    for (const statement of statements) {
      if (statement.name === "keywords") for (const word of keywordsOf(statement)) this.heard.add(word.toLowerCase());
      this.collectKeywords(statement.block);
    }
  }

  private walk(statements: readonly Statement[]): void {
    for (let at = 0; at < statements.length; ++at) {
      const statement = statements[at]!;
      if (statement.labels.length > 0) this.reachLabels(statement);
      if (statement.name === "if") {
        const next = statements[at + 1];
        const otherwise = next?.name === "else" && next.labels.length === 0 ? next : null;
        this.branch(statement, otherwise);
        if (otherwise) ++at;
      } else if (statement.name === "keywords") {
        at = this.hear(statements, at);
      } else {
        this.pass(statement);
      }
    }
  }

  private pass(statement: Statement): void {
    const { name, text } = statement;
    if (name === ".data" || name.startsWith(".unknown")) this.labels = [];
    else if (name === "text") this.say(statement, "said", text ?? statement.operands);
    else if (name === "sident") this.say(statement, "action", text ?? "");
    else if (name === "slook") this.say(statement, "look", text ?? "");
    else if (name === "dprint") this.say(statement, "table", this.tableText(statement));
    else if (inputs.has(name)) this.say(statement, "input", inputs.get(name)!);
    else if (name === "ask" || name === "askc") this.cardAt(statement).asks = true;
    else if (name === "jump") this.jump(statement);
    else if (name === "bye" || name === "end") this.finish(statement);
    else if (name === "else") this.walk(statement.block);
    else if (!silent.has(name)) this.say(statement, "action", `${name} ${this.words(statement.operands)}`.trim());
  }

  private reachLabels(statement: Statement): void {
    this.exits = this.takeExits();
    this.labels.push(...statement.labels);
  }

  // The card that goes on at a statement.
  private cardAt(statement: Statement, keywords: readonly string[] = [], hidden: readonly string[] = []): Card {
    if (this.current && keywords.length === 0) return this.current;
    const card: Card = {
      id: this.cards.length,
      line: statement.line,
      keywords,
      hidden,
      said: [],
      offers: [],
      asks: false,
      end: null,
    };
    this.cards.push(card);
    for (const exit of this.takeExits()) this.connect(exit, card);
    for (const label of this.labels.splice(0)) this.targets.set(label, card);
    return (this.current = card);
  }

  private say(statement: Statement, kind: Said["kind"], text: string): void {
    const card = this.cardAt(statement);
    card.said.push({ text, kind });
    for (const word of statement.offers) {
      card.offers.push({ word, isAnswered: this.heard.has(word.toLowerCase()) });
    }
  }

  private tableText(statement: Statement): string {
    const [label] = /\w+_\w+/.exec(statement.operands) ?? [""];
    const first = this.outline.labels.get(label)?.statement?.text;
    return first ? `one of “${first}” …` : "a text of a table";
  }

  // Operands with the first words of a table in the place of its label.
  private words(operands: string): string {
    return readable(operands).replace(/\b[A-Za-z_]\w*/g, (name) => {
      const label = this.outline.labels.get(name);
      return label ? (label.statement?.text ? `“${label.statement.text} …”` : "table") : name;
    });
  }

  private branch(condition: Statement, otherwise: Statement | null): void {
    this.gather(condition);
    const before = this.takeExits();
    const test = this.words(condition.operands);
    const after: Exit[] = [];
    this.exits = under(before, test);
    this.walk(condition.block);
    after.push(...this.takeExits());
    this.exits = under(before, "else");
    if (otherwise) this.walk(otherwise.block);
    after.push(...this.takeExits());
    this.exits = after;
  }

  // A chain of keywords, up to its "endanswer". Returns where it ends.
  private hear(statements: readonly Statement[], from: number): number {
    this.gather(statements[from]!);
    const before = this.takeExits();
    const after: Exit[] = [];
    const taken = new Set<string>();
    let at = from;
    for (; statements[at]?.name === "keywords"; ++at) {
      const statement = statements[at]!;
      if (statement.labels.length > 0 && at > from) this.labels.push(...statement.labels);
      const words = keywordsOf(statement);
      const hidden = words.filter((word) => taken.has("*") || taken.has(word.toLowerCase()));
      for (const word of words) taken.add(word.toLowerCase());
      this.exits = before;
      this.cardAt(statement, words.length > 0 ? words : [""], hidden);
      this.walk(statement.block);
      after.push(...this.takeExits());
    }
    this.exits = after;
    return at - 1;
  }

  private jump(statement: Statement): void {
    const exits = this.takeExits();
    for (const exit of exits) this.jumps.push({ exit, label: statement.operands });
    for (const label of this.labels.splice(0)) this.aliases.set(label, statement.operands);
  }

  private finish(statement: Statement): void {
    this.cardAt(statement).end = statement.name;
    this.current = null;
  }

  private target(label: string): Card | undefined {
    const seen = new Set<string>();
    let name: string | undefined = label;
    for (; name !== undefined && !seen.has(name); name = this.aliases.get(name)) {
      const card = this.targets.get(name);
      if (card) return card;
      seen.add(name);
    }
    return undefined;
  }

  // Before ways part: where jumps or several ways lead, they meet in a card first.
  private gather(statement: Statement): void {
    if (this.labels.length > 0 || (!this.current && this.exits.length > 2)) this.cardAt(statement);
  }

  // What leads on from here; nothing does afterwards.
  private takeExits(): Exit[] {
    const exits = this.current ? [{ from: this.current, conditions: [] }] : this.exits;
    this.current = null;
    this.exits = [];
    return exits;
  }

  private connect(exit: Exit, to: Card): void {
    this.arrows.push({ from: exit.from, to, condition: exit.conditions.join(", "), isBack: to.id <= exit.from.id });
  }
}

const under = (exits: readonly Exit[], condition: string): Exit[] =>
  exits.map(({ from, conditions }) => ({
    from,
    conditions: conditions.at(-1) === condition ? conditions : [...conditions, condition],
  }));

// The first words of a card, which name it in place of its label.
export function titleOf(card: Card): string {
  const first = card.said.find((said) => said.kind === "said") ?? card.said[0];
  const words = (first?.text ?? card.keywords.join(", ")).replace(/\s+/g, " ").trim();
  return words.length > 40 ? `${words.slice(0, 38).trimEnd()}…` : words;
}
